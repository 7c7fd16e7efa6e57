// SPDX-License-Identifier: GPL-3.0-or-later
#include "platform/InterruptSignals.h"

#include "support/Await.h"

#include <gtest/gtest.h>

#include <csignal>

namespace ostrelle {

namespace {

auto handlerOf(int number) {
    struct sigaction action{};
    ::sigaction(number, nullptr, &action);
    return action.sa_handler;
}

} // namespace

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
            EXPECT_EQ(handlerOf(SIGTERM), SIG_DFL) << "the next one ends the program at once";
            EXPECT_EQ(interrupts, 1);
        }
        std::raise(SIGHUP); // the program is not through yet
        std::signal(SIGHUP, SIG_DFL);
    }
}

TEST(InterruptSignals, WhatWasIgnoredStaysIgnored) {
    std::signal(SIGHUP, SIG_IGN);
    {
        const InterruptSignals signals;
        EXPECT_EQ(handlerOf(SIGHUP), SIG_IGN);
        EXPECT_NE(handlerOf(SIGTERM), SIG_DFL);
    }
    EXPECT_EQ(handlerOf(SIGHUP), SIG_IGN);
    EXPECT_EQ(handlerOf(SIGTERM), SIG_DFL);
    std::signal(SIGHUP, SIG_DFL);
}

} // namespace ostrelle
