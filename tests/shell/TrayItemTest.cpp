// SPDX-License-Identifier: GPL-3.0-or-later
#include "shell/panel/TrayItem.h"

#include "shell/ShellFixture.h"
#include "support/Await.h"

#include <gtest/gtest.h>

#include <QAction>
#include <chrono>
#include <functional>

namespace ostrelle {

using namespace Qt::StringLiterals;
using Kind = TrayState::Kind;

TEST(TrayState, WhatNeedsTheUserComesBeforeWhatGoesOnByItself) {
    ShellWorld world;
    StatusStore& status = world.status;
    const QList<Problem> lost{{.words = u"The watch folder is not there."_s}};
    const struct {
        std::function<void()> change;
        bool isOn;
        QList<Problem> problems;
        TrayState state;
    } rows[] = {
        {[] {}, false, {}, {Kind::off, u"Auto mode is off"_s}},
        {[] {}, true, {}, {Kind::watching, u"Watching for new images"_s}},
        {[&] { status.setFtpIsDownloading(true); }, true, {}, {Kind::captioning, u"Downloading"_s}},
        {[&] { status.setQueue({.done = 2, .total = 3}); },
         true,
         {},
         {Kind::captioning, u"Captioning 1 image"_s}},
        {[&] {
             status.setIsProcessing(true);
             status.setTotalFiles(21);
             status.setProcessed(3);
             status.setFailed(1);
         },
         false,
         {},
         {Kind::captioning, u"Captioning 17 images"_s}},
        {[&] { status.setIsPaused(true); }, true, {}, {Kind::captioning, u"Paused with 17 images to go"_s}},
        {[] {}, true, lost, {Kind::needsAttention, u"The watch folder is not there."_s}},
    };
    for (const auto& row : rows) {
        row.change();
        EXPECT_EQ(trayState(row.isOn, status, row.problems), row.state) << row.state.words.toStdString();
    }
}

TEST(TrayItem, IsFoundWhenTheTrayComesLateAndFollowsTheSwitch) {
    ShellWorld world;
    PanelActions actions(world.parts);
    const Problems problems(world.parts, actions.roster());
    TrayItem item(world.parts, actions, problems);
    EXPECT_FALSE(item.isThere());
    world.isTrayThere = true;
    world.clock.advance(std::chrono::seconds(3));
    EXPECT_TRUE(item.isThere());
    const auto action = [&item](const QString& words) {
        const QList<QAction*> all = item.menu().actions();
        const auto found = std::find_if(all.begin(), all.end(),
                                        [&](QAction* one) { return one->text().remove(u'&') == words; });
        return found == all.end() ? nullptr : *found;
    };
    EXPECT_FALSE(action(u"Stop"_s)->isVisible());
    world.settings.setAutoMode(true);
    EXPECT_TRUE(action(u"Auto Mode"_s)->isChecked());
    action(u"Auto Mode"_s)->trigger();
    EXPECT_FALSE(world.settings.autoMode());
    world.alerts.answer = 0;
    action(u"Auto Mode"_s)->trigger(); // refused: nothing is set
    await(actions.finished());
    EXPECT_FALSE(action(u"Auto Mode"_s)->isChecked());
    EXPECT_EQ(world.alerts.shown.size(), 1);
}

} // namespace ostrelle
