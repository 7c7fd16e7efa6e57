// SPDX-License-Identifier: GPL-3.0-or-later
// ostrelle-caption against the stand-in for the model service, in one process. The stand-in accepts one key.
#include "cli/CommandLine.h"
#include "core/Error.h"
#include "standins/ModelStandIn.h"

#include <QCoreApplication>
#include <cstdio>

int main(int argc, char** argv) {
    const QCoreApplication application(argc, argv);
    try {
        const ostrelle::ModelStandIn model("demo-key");
        std::fputs(
            "The captions below come from a stand-in for the model service: it sees no picture and only\n"
            "repeats the facts of the request.\n",
            stderr);
        return ostrelle::runCommandLine(QCoreApplication::arguments().sliced(1), {.model = model.url()});
    } catch (const ostrelle::Error& error) {
        std::fprintf(stderr, "ostrelle-caption-demo: %s\n", error.what());
        return 1;
    }
}
