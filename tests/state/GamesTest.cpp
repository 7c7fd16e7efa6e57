// SPDX-License-Identifier: GPL-3.0-or-later
#include "state/Games.h"

#include "platform/PathReferences.h"
#include "standins/MemoryDefaults.h"
#include "standins/MemorySecrets.h"
#include "support/Await.h"
#include "support/RecordingLog.h"

#include <gtest/gtest.h>

namespace ostrelle {

using namespace Qt::StringLiterals;

namespace {

/// The settings and games of one start of the program.
struct Start {
    explicit Start(DefaultsStore& defaults) : m_defaults(defaults) {}
    ~Start() { await(settings.pathsSettled()); }

    DefaultsStore& m_defaults;
    RecordingLog log;
    MemorySecrets secrets;
    KeychainHelper keychain{secrets, log};
    PathReferences references;
    SettingsStore settings{m_defaults, keychain, references, log};
    Games games{m_defaults, settings};
};

} // namespace

TEST(Games, EachKeepsItsOwnSettings) {
    MemoryDefaults defaults;
    {
        Start start(defaults);
        SettingsStore& settings = start.settings;
        settings.setIngestFolder(u"/tmp"_s);
        settings.setTeam1Name(u"Kentucky"_s);
        settings.setIncludeOffenseDefense(true);
        start.games.begin(u"First"_s);
        EXPECT_EQ(settings.ingestFolder(), u"/tmp"_s) << "it takes the settings as they are";

        start.games.begin(u"Second"_s);
        EXPECT_EQ(settings.ingestFolder(), std::nullopt) << "not the images of the first";
        EXPECT_EQ(settings.team1Name(), QString());
        settings.setIngestFolder(u"/usr"_s);
        settings.setSport(Sport::soccer);
        settings.setCaptionStyle(CaptionStyle::gettySports);

        start.games.recall(u"First"_s);
        EXPECT_EQ(settings.ingestFolder(), u"/tmp"_s);
        EXPECT_EQ(settings.sport(), Sport::football);
        EXPECT_TRUE(settings.includeOffenseDefense());
        EXPECT_EQ(settings.captionStyle(), CaptionStyle::apSports);
        start.games.recall(u"Second"_s);
        settings.setIngestFolder(std::nullopt); // its drive is not there
    }
    Start again(defaults);
    EXPECT_EQ(again.games.current(), u"Second");
    EXPECT_EQ(again.settings.captionStyle(), CaptionStyle::gettySports);
    again.games.recall(u"First"_s);
    EXPECT_EQ(again.settings.team1Name(), u"Kentucky");
    again.games.recall(u"Second"_s);
    EXPECT_EQ(again.settings.ingestFolder(), u"/usr"_s);
    again.games.remove(u"Second"_s);
    again.settings.setTeam1Name(u"Ohio"_s);
    EXPECT_EQ(again.games.names(), QStringList{u"First"_s});
    again.games.recall(u"First"_s);
    EXPECT_EQ(again.settings.team1Name(), u"Kentucky") << "no game was current";
}

TEST(Games, WhatSomebodyWroteIntoTheStoreDoesNoHarm) {
    MemoryDefaults defaults;
    const QByteArray odd = R"({"name": "A", "sport": "chess", "team1Name": 7, "ingestFolder": {}})";
    defaults.set(u"games"_s, QVariantList{qint64{1}, "no JSON"_ba, R"({"name": ""})"_ba, odd, odd});
    defaults.set(u"currentGame"_s, u"B"_s);
    Start start(defaults);
    EXPECT_EQ(start.games.names(), QStringList{u"A"_s});
    EXPECT_EQ(start.games.current(), QString());
    start.games.recall(u"A"_s);
    EXPECT_EQ(start.settings.sport(), Sport::football);
    EXPECT_EQ(start.settings.ingestFolder(), std::nullopt);
}

} // namespace ostrelle
