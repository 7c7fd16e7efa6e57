// SPDX-License-Identifier: GPL-3.0-or-later
#include "platform/InterruptSignals.h"

#include "support/Await.h"

#include <gtest/gtest.h>

#include <csignal>

namespace ostrelle {

TEST(InterruptSignals, EachIsToldOfAndATerminalThatClosesKillsNothing) {
    for (const int number : {SIGHUP, SIGTERM, SIGINT}) {
        {
            const InterruptSignals signals;
            int interrupts = 0;
            QObject::connect(&signals, &InterruptSignals::interrupted, &signals, [&] { ++interrupts; });
            std::raise(number);
            std::raise(SIGHUP);
            waitUntil([&] { return interrupts > 0; });
            std::raise(SIGHUP);
            EXPECT_EQ(interrupts, 1);
        }
        EXPECT_EQ(std::signal(SIGHUP, SIG_DFL), SIG_IGN) << "SIGHUP stays ignored while the program ends";
        EXPECT_EQ(std::signal(SIGTERM, SIG_DFL), SIG_DFL) << "the next signal ends the program at once";
    }
    std::signal(SIGHUP, SIG_IGN); // as nohup does
    const InterruptSignals signals;
    EXPECT_EQ(std::signal(SIGHUP, SIG_DFL), SIG_IGN);
}

} // namespace ostrelle
