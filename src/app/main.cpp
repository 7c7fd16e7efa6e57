// SPDX-License-Identifier: GPL-3.0-or-later
#include "app/DesktopMain.h"

int main(int argc, char** argv) {
    return ostrelle::runDesktopProgram(argc, argv, &ostrelle::ServiceEndpoints::builtIn);
}
