// SPDX-License-Identifier: GPL-3.0-or-later
#include "state/KeychainHelper.h"

#include "state/SlowSecrets.h"
#include "support/Await.h"
#include "support/RecordingLog.h"
#include "support/VirtualClock.h"

#include <gtest/gtest.h>

#include <memory>

namespace ostrelle {

using namespace Qt::StringLiterals;

namespace {

const QString account = u"FTPPassword"_s;
const QString item = u"com.tobinvasquel.OstrelleCaptions/FTPPassword"_s;

class KeychainHelperTest : public testing::Test {
protected:
    VirtualClock clock;
    SlowSecrets secrets{clock};
    RecordingLog log;
    std::unique_ptr<KeychainHelper> keychain = std::make_unique<KeychainHelper>(secrets, log);
};

TEST_F(KeychainHelperTest, OperationsRunOneAfterTheOtherAndFinishingWaitsForAll) {
    keychain->save(u"first"_s, account);
    const auto afterFirst = keychain->load(account);
    keychain->save(u"second"_s, account);
    auto afterSecond = keychain->load(account);
    keychain->remove(account);
    auto atTheEnd = keychain->load(account);
    const auto finished = keychain->finishPending();
    EXPECT_EQ(secrets.begun, QStringList(u"remove"_s)); // the others wait for it
    secrets.end(7);
    EXPECT_FALSE(finished.isReady());
    secrets.end();
    EXPECT_TRUE(finished.isReady() && keychain->finishPending().isReady());
    EXPECT_EQ(secrets.begun, QStringList({u"remove"_s, u"save first"_s, u"load"_s, u"remove"_s,
                                          u"save second"_s, u"load"_s, u"remove"_s, u"load"_s}));
    EXPECT_TRUE(afterFirst.isReady());
    EXPECT_EQ(await(std::move(afterSecond)), u"second"_s);
    EXPECT_EQ(await(std::move(atTheEnd)), std::nullopt);
    EXPECT_EQ(log.lines, QStringList());
}

TEST_F(KeychainHelperTest, AFailedSaveIsLoggedUnlessItsOwnerHasEndedAndTheOldPasswordIsGone) {
    secrets.secrets.insert(item, u"old"_s);
    keychain->save(u"new"_s, account);
    secrets.end(1);
    secrets.status = 7;
    secrets.end(1);
    EXPECT_EQ(log.lines, QStringList(u"[KeychainHelper] Failed to save password: 7"_s));
    EXPECT_TRUE(secrets.secrets.isEmpty());
    keychain->save(u"newer"_s, account);
    secrets.end(1);
    ASSERT_EQ(secrets.begun.last(), u"save newer"_s);
    keychain.reset();
    secrets.end(1);
    EXPECT_EQ(log.lines.size(), 1);
}

TEST_F(KeychainHelperTest, APasswordWithoutAUtf8FormChangesNothing) {
    keychain->save(u"half a pair: "_s + QChar(0xD83D), account);
    EXPECT_EQ(secrets.begun, QStringList());
}

// When the helper is destroyed, the operation under way ends and no other begins.
TEST_F(KeychainHelperTest, EndsWithItsOwner) {
    keychain->save(u"secret"_s, account);
    auto loaded = keychain->load(account);
    const auto finished = keychain->finishPending();
    keychain.reset();
    secrets.end();
    EXPECT_EQ(secrets.begun, QStringList(u"remove"_s));
    EXPECT_EQ(await(std::move(loaded)), std::nullopt);
    EXPECT_TRUE(finished.isReady());
    EXPECT_EQ(clock.waiting(), 0);
}

} // namespace

} // namespace ostrelle
