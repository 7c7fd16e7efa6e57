// SPDX-License-Identifier: GPL-3.0-or-later
// ostrelle-caption against a stand-in for the model service that fails one request in five.
#include "cli/CommandLine.h"
#include "core/Error.h"
#include "standins/ModelStandIn.h"

#include <QCoreApplication>
#include <cstdio>

int main(int argc, char** argv) {
    const QCoreApplication application(argc, argv);
    try {
        ostrelle::ModelStandIn model("soak-key");
        model.setKeepsBodies(false);
        model.failEvery(5, 500);
        return ostrelle::runCommandLine(QCoreApplication::arguments().sliced(1), {.model = model.url()});
    } catch (const ostrelle::Error& error) {
        std::fprintf(stderr, "ostrelle-caption-soak: %s\n", error.what());
        return 1;
    }
}
