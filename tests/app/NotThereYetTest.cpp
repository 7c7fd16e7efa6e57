// SPDX-License-Identifier: GPL-3.0-or-later
#include "app/NotThereYet.h"

#include "shell/ShellFixture.h"
#include "support/Await.h"

#include <gtest/gtest.h>

namespace ostrelle {

using namespace Qt::StringLiterals;

TEST(NotThereYet, WhatIsAskedForIsRefusedInWordsAndNotLeftOn) {
    ShellWorld world;
    NotThereYet notThereYet(world.events, world.settings, world.alerts, world.console);
    const auto newsAfter = [&](const auto& act) {
        world.alerts.shown.clear();
        act();
        await(notThereYet.finished());
        return world.alerts.shown.isEmpty() ? QString() : world.alerts.shown.first().text;
    };

    world.settings.setLaunchWithPhotoMechanic(true);
    EXPECT_TRUE(newsAfter([&] {
                    Q_EMIT world.events.photoMechanicSettingChanged();
                }).contains(u"cannot start with Photo Mechanic yet"_s));
    EXPECT_TRUE(world.settings.launchWithPhotoMechanic());
    world.settings.setLaunchWithPhotoMechanic(false);
    EXPECT_EQ(newsAfter([&] { Q_EMIT world.events.photoMechanicSettingChanged(); }), QString());
}

} // namespace ostrelle
