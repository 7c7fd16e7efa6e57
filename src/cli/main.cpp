// SPDX-License-Identifier: GPL-3.0-or-later
#include "cli/CommandLine.h"

#include <QCoreApplication>

int main(int argc, char** argv) {
    const QCoreApplication application(argc, argv);
    return ostrelle::runCommandLine(QCoreApplication::arguments().sliced(1),
                                    ostrelle::ServiceEndpoints::builtIn());
}
