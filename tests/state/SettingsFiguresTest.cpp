// SPDX-License-Identifier: GPL-3.0-or-later
#include "state/SettingsFigures.h"

#include "platform/PathReferences.h"
#include "product/ApiKey.h"
#include "standins/MemoryDefaults.h"
#include "standins/MemorySecrets.h"
#include "support/RecordingLog.h"
#include "support/VirtualClock.h"

#include <gtest/gtest.h>

#include <QLocale>

namespace ostrelle {

using namespace Qt::StringLiterals;

namespace {

class SettingsFiguresTest : public testing::Test {
protected:
    MemoryDefaults defaults;
    MemorySecrets secrets;
    PathReferences references;
    RecordingLog console;
    VirtualClock clock;
    KeychainHelper keychain{secrets, console};
    SettingsStore settings{defaults, keychain, references, console};
};

} // namespace

TEST_F(SettingsFiguresTest, AKeyIsStoredWithoutTheWhiteSpaceAroundIt) {
    EXPECT_FALSE(saveApiKey(defaults, settings, u" \n\t"_s));
    EXPECT_FALSE(settings.hasAPIKey() || defaults.exists(apiKeyName));
    EXPECT_TRUE(saveApiKey(defaults, settings, u"\r\n sk-1 2\u00a0\n"_s));
    EXPECT_TRUE(settings.hasAPIKey());
    EXPECT_EQ(apiKey(defaults), u"sk-1 2");
    EXPECT_FALSE(saveApiKey(defaults, settings, {}));
    EXPECT_EQ(apiKey(defaults), u"sk-1 2");
    clearApiKey(defaults, settings);
    EXPECT_FALSE(settings.hasAPIKey() || defaults.exists(apiKeyName));
}

TEST_F(SettingsFiguresTest, AConnectionIsTestedWithAllItsFields) {
    const struct {
        QString host, user, password;
        bool isComplete;
    } rows[] = {
        {u"h"_s, u"u"_s, u"p"_s, true},
        {{}, u"u"_s, u"p"_s, false},
        {u"h"_s, {}, u"p"_s, false},
        {u"h"_s, u"u"_s, {}, false},
    };
    for (const auto& row : rows) {
        settings.setFtpHost(row.host);
        settings.setFtpUsername(row.user);
        settings.setFtpPassword(row.password);
        const std::optional<QString> refusal = connectionTestRefusal(settings);
        EXPECT_EQ(!refusal, row.isComplete);
        EXPECT_EQ(refusal.value_or(u"Please fill in all required fields"_s),
                  u"Please fill in all required fields");
    }
    EXPECT_EQ(connectionStatusText(u"success"_s), u"Connection successful");
    EXPECT_EQ(connectionStatusText(u"Connection failed"_s), u"Connection failed");
}

TEST_F(SettingsFiguresTest, ClearingTheServerKeepsTheProtocol) {
    settings.setTransferProtocol(TransferProtocol::sftp);
    settings.setFtpHost(u"h"_s);
    settings.setFtpPath(u"/in"_s);
    settings.setFtpConnectionStatus(u"success"_s);
    clearFtpSettings(settings);
    EXPECT_TRUE(settings.ftpHost().isEmpty());
    EXPECT_EQ(settings.ftpPath(), u"/");
    EXPECT_EQ(settings.ftpConnectionStatus(), std::nullopt);
    EXPECT_EQ(settings.transferProtocol(), TransferProtocol::sftp);
    EXPECT_EQ(settings.ftpPort(), 21);
    settings.setTransferProtocol(TransferProtocol::ftp);
    EXPECT_EQ(settings.ftpPort(), 21);
}

TEST_F(SettingsFiguresTest, FiguresLookTheSameInEveryLanguage) {
    const QLocale before;
    QLocale::setDefault(QLocale(QLocale::German));
    StatusStore status(defaults, clock);
    UsageTracker usage(defaults, clock, console);
    status.setLifetimeImagesProcessed(12345);
    status.setTotalProcessedAllTime(2);
    status.setTotalFailedAllTime(1);
    status.beginTimedRun(4);
    clock.advance(std::chrono::milliseconds(9000));
    status.recordBatchFinished();
    usage.recordUsage(1'000'000, 500'000);
    const StatisticsTexts texts = StatisticsTexts::of(status, usage);
    QLocale::setDefault(before);
    EXPECT_EQ(texts.lifetimeImages, u"12345");
    EXPECT_EQ(texts.successRate, u"66.7%");
    EXPECT_EQ(texts.successCounts, u"(2 processed, 1 failed)");
    EXPECT_EQ(texts.averageTime, QString::number(status.averageProcessingTime(), 'f', 1) + u's');
    EXPECT_TRUE(texts.averageTime.startsWith(u"2.2") || texts.averageTime.startsWith(u"2.3"));
    EXPECT_EQ(texts.todaysCost, u"$0.4500");
    EXPECT_EQ(texts.totalCost, u"$0.45");
    EXPECT_EQ(promptCacheText(3, 0), u"Cached Prompts: 3");
    EXPECT_EQ(promptCacheText(3, 1), u"Cached Prompts: 3 (1 expired)");
}

} // namespace ostrelle
