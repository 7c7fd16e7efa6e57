// SPDX-License-Identifier: GPL-3.0-or-later
#include "platform/PathReferences.h"
#include "standins/MemoryDefaults.h"
#include "state/SettingsStore.h"
#include "state/SlowSecrets.h"
#include "support/Await.h"
#include "support/LockedSecrets.h"
#include "support/RecordingLog.h"
#include "support/VirtualClock.h"

#include <gtest/gtest.h>

#include <QCoreApplication>
#include <QSignalSpy>
#include <memory>

namespace ostrelle {

using namespace Qt::StringLiterals;

namespace {

const QString passwordItem = u"com.tobinvasquel.OstrelleCaptions/FTPPassword"_s;

/// Starts the program with the password "stored" in the keychain.
class SettingsPasswordTest : public testing::Test {
protected:
    void start() {
        secrets.secrets.insert(passwordItem, u"stored"_s);
        secrets.begun.clear();
        settings = std::make_unique<SettingsStore>(defaults, keychain, references, log);
    }

    MemoryDefaults defaults;
    VirtualClock clock;
    SlowSecrets secrets{clock};
    RecordingLog log;
    PathReferences references;
    KeychainHelper keychain{secrets, log};
    std::unique_ptr<SettingsStore> settings;
};

TEST_F(SettingsPasswordTest, ComesLateAndIsNotSavedAgain) {
    start();
    EXPECT_EQ(settings->ftpPassword(), QString());
    QString seen; // by a task that waits for the keychain
    const auto finished = keychain.finishPending().then([this, &seen] { seen = settings->ftpPassword(); });
    secrets.end();
    EXPECT_EQ(seen, u"stored"_s);
    EXPECT_EQ(secrets.begun, QStringList(u"load"_s));
    start();
    settings.reset();
    secrets.end(); // nobody is left to get it
}

TEST_F(SettingsPasswordTest, ThatTheUserHasSetMeanwhileStandsAndIsSaved) {
    for (const QString& password : {u"new"_s, u""_s}) {
        start();
        settings->setFtpPassword(password);
        secrets.end();
        EXPECT_EQ(settings->ftpPassword(), password);
        EXPECT_EQ(secrets.secrets.value(passwordItem), password);
        EXPECT_EQ(secrets.secrets.contains(passwordItem), !password.isEmpty());
    }
}

TEST_F(SettingsPasswordTest, OfALockedKeyringIsUnknownUntilItIsUnlockedOrTheUserGivesOne) {
    for (const bool isTyped : {false, true}) {
        LockedSecrets locked;
        locked.secrets.insert(passwordItem, u"stored"_s);
        KeychainHelper lockedKeychain(locked, log);
        SettingsStore store(defaults, lockedKeychain, references, log);
        const QSignalSpy known(&store, &SettingsStore::passwordKnown);
        EXPECT_FALSE(store.isPasswordKnown());
        if (isTyped) {
            store.setFtpPassword(u"typed"_s);
            EXPECT_FALSE(lockedKeychain.isSaving()) << "saved at once, without waiting for the keyring";
        }
        locked.unlock();
        waitUntil([&store] { return store.isPasswordKnown(); });
        QCoreApplication::processEvents();
        EXPECT_EQ(store.ftpPassword(), isTyped ? u"typed"_s : u"stored"_s);
        EXPECT_EQ(known.size(), 1);
    }
}

TEST_F(SettingsPasswordTest, IsKnownToBeMissingOnceTheKeychainHasAnswered) {
    start();
    secrets.secrets.clear();
    EXPECT_FALSE(settings->isPasswordKnown());
    secrets.end();
    EXPECT_TRUE(settings->isPasswordKnown());
    EXPECT_EQ(settings->ftpPassword(), QString());
}

} // namespace

} // namespace ostrelle
