// SPDX-License-Identifier: GPL-3.0-or-later
// ostrelle-captions against the stand-in for the model service, in one process. The stand-in accepts one key.
#include "app/DesktopMain.h"
#include "core/Error.h"
#include "standins/ModelStandIn.h"

#include <chrono>
#include <cstdio>
#include <optional>

int main(int argc, char** argv) {
    std::optional<ostrelle::ModelStandIn> model;
    const auto endpoints = [&model]() -> ostrelle::ServiceEndpoints {
        model.emplace("demo-key");
        model->setDelay(std::chrono::seconds(1)); // to make progress visible
        return {.model = model->url()};
    };
    try {
        return ostrelle::runDesktopProgram(argc, argv, endpoints);
    } catch (const ostrelle::Error& error) {
        std::fprintf(stderr, "ostrelle-captions-demo: %s\n", error.what());
        return 1;
    }
}
