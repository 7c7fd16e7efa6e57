// SPDX-License-Identifier: GPL-3.0-or-later
#include "shell/toolkit/Theme.h"

#include <gtest/gtest.h>

#include <QApplication>

int main(int argc, char** argv) {
    qputenv("QT_QPA_PLATFORM", "offscreen");
    QApplication application(argc, argv);
    ostrelle::applyTheme(application, ostrelle::ThemeChoice::light);
    testing::InitGoogleTest(&argc, argv);
    return RUN_ALL_TESTS();
}
