// SPDX-License-Identifier: GPL-3.0-or-later
#include "platform/Patience.h"

#include "support/Await.h"
#include "support/VirtualClock.h"

#include <gtest/gtest.h>

namespace ostrelle {

using namespace std::chrono_literals;

TEST(Patience, ATaskIsWaitedForJustSoLong) {
    for (const auto& [length, isEndedInTime] : {std::pair(4s, true), std::pair(6s, false)}) {
        VirtualClock clock;
        QCoro::Task<bool> ends = endsWithin(clock.sleep(length), clock, 5s);
        clock.advance(5s);
        EXPECT_EQ(await(std::move(ends)), isEndedInTime);
        clock.advance(1s); // an unfinished task runs on, ignored
        EXPECT_EQ(clock.waiting(), 0);
    }
}

} // namespace ostrelle
