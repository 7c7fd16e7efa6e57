// SPDX-License-Identifier: GPL-3.0-or-later
#include "product/NotificationManager.h"

#include "core/Error.h"
#include "support/Await.h"
#include "support/RecordingLog.h"

#include <gtest/gtest.h>

#include <optional>

namespace ostrelle {

using namespace Qt::StringLiterals;

namespace {

using Text = std::optional<QString>;
using Interruption = DesktopNotification::Interruption;
using Sound = DesktopNotification::Sound;

class FakeCenter : public NotificationCenter {
public:
    QCoro::Task<bool> isAvailable() override {
        if (isUnreachable) {
            throw Error(u"No bus."_s);
        }
        co_return isPresent;
    }
    QCoro::Task<> post(DesktopNotification notification) override {
        posted.append(notification);
        if (refusesAll) {
            throw Error(u"Too many."_s);
        }
        co_return;
    }

    bool isPresent = true;
    bool isUnreachable = false;
    bool refusesAll = false;
    QList<DesktopNotification> posted;
};

class NotificationManagerTest : public testing::Test {
protected:
    using Post = QCoro::Task<> (NotificationManager::*)(qint64, QStringList, Text);

    QString bodyOf(Post post, qint64 count, const QStringList& files, const Text& detail) {
        center.posted.clear();
        await((manager.*post)(count, files, detail));
        return center.posted.size() == 1 ? center.posted.first().body : u"(not one message)"_s;
    }
    QString failureBody(qint64 count, const QStringList& files, const Text& detail) {
        center.posted.clear();
        await(manager.postProcessingResult(0, count, files, detail));
        return center.posted.size() == 1 ? center.posted.first().body : u"(not one message)"_s;
    }
    /// One message of each kind, in the order of the kinds.
    void postAll() {
        await(manager.postProcessingResult(1, 2, {}));
        await(manager.postRateLimitFailure(3, {}));
        await(manager.postPermissionFailure(4, {}));
        await(manager.postConfigurationMissing(u"OpenAI API Key"_s));
    }

    FakeCenter center;
    RecordingLog log;
    NotificationManager manager{center, log};
};

TEST_F(NotificationManagerTest, KindsDifferInTitleThreadSoundAndInterruption) {
    postAll();
    ASSERT_EQ(center.posted.size(), 5);
    const QList<DesktopNotification> expected = {
        {u"Ostrelle Captioning Complete"_s, u"Successfully captioned 1 image."_s, u"ostrelle-processing"_s,
         Sound::normal, Interruption::normal},
        {u"Ostrelle Captioning Failed"_s, u"Failed to caption 2 images. Check permissions and try again."_s,
         u"ostrelle-processing"_s, Sound::critical, Interruption::critical},
        {u"Rate Limit Exceeded"_s,
         u"OpenAI API rate limit reached. 3 images failed. Processing will resume automatically when the limit resets."_s,
         u"ostrelle-ratelimit"_s, Sound::critical, Interruption::critical},
        {u"Permission Error \u2014 Action Required"_s,
         u"Failed to write captions to 4 images. Please grant folder access permissions."_s,
         u"ostrelle-permissions"_s, Sound::critical, Interruption::critical},
        {u"Configuration Required"_s,
         u"OpenAI API Key is missing. Please configure it in Settings to enable auto-processing."_s,
         u"ostrelle-config"_s, Sound::critical, Interruption::normal},
    };
    for (qsizetype index = 0; index < expected.size(); ++index) {
        EXPECT_EQ(center.posted[index], expected[index])
            << center.posted[index].title.toStdString() << ": " << center.posted[index].body.toStdString();
    }
}

TEST_F(NotificationManagerTest, FailuresNameThreeFilesAndAddTheDetail) {
    const QStringList three = {u"a"_s, u"b"_s, u"c"_s};
    const QStringList four = three + QStringList(u"%1"_s);
    const struct {
        qint64 count;
        QStringList files;
        Text detail;
        QString body;
    } rows[] = {
        {1, {}, {}, u"Failed to caption 1 image. Check permissions and try again."_s},
        {1, {u"a"_s}, {}, u"Failed to caption 1 image. Files: a."_s},
        {3, three, {}, u"Failed to caption 3 images. Files: a, b, c."_s},
        {4,
         {u"%2"_s, u"b"_s, u"c"_s, u"d"_s},
         {},
         u"Failed to caption 4 images. Files: %2, b, c and 1 more."_s},
        {9, four + three, {}, u"Failed to caption 9 images. Files: a, b, c and 4 more."_s},
        {2, {u"a"_s}, u""_s, u"Failed to caption 2 images. Files: a."_s},
        {2, {u"a"_s}, u"Disk full."_s, u"Failed to caption 2 images. Files: a. Disk full."_s},
        {2,
         {},
         u"Disk full."_s,
         u"Failed to caption 2 images. Check permissions and try again. Disk full."_s},
    };
    for (const auto& row : rows) {
        EXPECT_EQ(failureBody(row.count, row.files, row.detail), row.body);
    }
}

TEST_F(NotificationManagerTest, RateLimitsAndPermissionsAddEvenAnEmptyDetail) {
    const struct {
        Post post;
        qint64 count;
        QStringList files;
        Text detail;
        QString body;
    } rows[] = {
        {&NotificationManager::postRateLimitFailure,
         1,
         {u"a"_s},
         u"429"_s,
         u"OpenAI API rate limit reached. 1 image failed: a. Processing will resume automatically when the limit resets. Details: 429"_s},
        {&NotificationManager::postRateLimitFailure,
         5,
         {u"a"_s, u"b"_s, u"c"_s, u"d"_s},
         u""_s,
         u"OpenAI API rate limit reached. 5 images failed: a, b, c and 1 more. Processing will resume automatically when the limit resets. Details: "_s},
        {&NotificationManager::postPermissionFailure,
         1,
         {u"a"_s},
         u"EACCES"_s,
         u"Failed to write captions to 1 image. Files: a. Please grant folder access permissions. Error: EACCES"_s},
        {&NotificationManager::postPermissionFailure,
         2,
         {},
         u""_s,
         u"Failed to write captions to 2 images. Please grant folder access permissions. Error: "_s},
    };
    for (const auto& row : rows) {
        EXPECT_EQ(bodyOf(row.post, row.count, row.files, row.detail), row.body);
    }
}

TEST_F(NotificationManagerTest, ARunWithoutResultsIsNoNews) {
    await(manager.postProcessingResult(0, 0, {u"a"_s}, u"detail"_s));
    await(manager.postProcessingResult(-1, -1, {}));
    EXPECT_TRUE(center.posted.isEmpty());
    EXPECT_TRUE(log.lines.isEmpty());
}

TEST_F(NotificationManagerTest, EachMessageIsLogged) {
    postAll();
    const QStringList starts = {u"Posted success notification: Success"_s,
                                u"Posted critical failure notification: Failed to caption"_s,
                                u"Posted rate limit failure notification: OpenAI"_s,
                                u"Posted permission failure notification: Failed to write"_s,
                                u"Posted configuration missing notification: OpenAI API Key is"_s};
    ASSERT_EQ(log.lines.size(), starts.size());
    for (qsizetype index = 0; index < starts.size(); ++index) {
        EXPECT_TRUE(log.lines[index].startsWith(u"[NotificationManager] "_s + starts[index]))
            << log.lines[index].toStdString();
    }
}

TEST_F(NotificationManagerTest, ARefusedMessageIsLoggedAndTheNextOnePosted) {
    center.refusesAll = true;
    postAll();
    EXPECT_EQ(center.posted.size(), 5);
    EXPECT_EQ(log.lines,
              QStringList({u"[NotificationManager] Failed to post success notification: Too many."_s,
                           u"[NotificationManager] Failed to post failure notification: Too many."_s,
                           u"[NotificationManager] Failed to post rate limit notification: Too many."_s,
                           u"[NotificationManager] Failed to post permission notification: Too many."_s,
                           u"[NotificationManager] Failed to post notification: Too many."_s}));
}

TEST_F(NotificationManagerTest, WithoutPermissionNothingReachesTheCenter) {
    const QStringList five(5, u"[NotificationManager] No permission to post notification"_s);
    center.isUnreachable = true;
    postAll();
    EXPECT_EQ(log.lines, five);
    log.lines.clear();
    center.isUnreachable = false;
    center.isPresent = false;
    postAll();
    EXPECT_EQ(log.lines, five);
    EXPECT_TRUE(center.posted.isEmpty());
}

TEST_F(NotificationManagerTest, TheRequestForPermissionTellsItsAnswer) {
    EXPECT_TRUE(await(manager.requestPermission()));
    center.isPresent = false;
    EXPECT_FALSE(await(manager.requestPermission()));
    center.isUnreachable = true;
    EXPECT_FALSE(await(manager.requestPermission()));
    EXPECT_EQ(log.lines, QStringList({u"[NotificationManager] Permission granted: true"_s,
                                      u"[NotificationManager] Permission granted: false"_s,
                                      u"[NotificationManager] Permission request failed: No bus."_s}));
}

} // namespace

} // namespace ostrelle
