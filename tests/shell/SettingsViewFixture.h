// SPDX-License-Identifier: GPL-3.0-or-later
#pragma once

#include "shell/ViewTest.h"
#include "shell/settings/SettingsView.h"

#include <QAbstractButton>
#include <QTabBar>

namespace ostrelle {

class SettingsViewTest : public ViewTest<SettingsView> {
protected:
    SettingsViewTest() : ViewTest(QSize(550, 575)) {}

    void showTab(int index) { find<QTabBar>(QStringLiteral("settingsTabs"))->setCurrentIndex(index); }
};

} // namespace ostrelle
