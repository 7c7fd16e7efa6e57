// SPDX-License-Identifier: GPL-3.0-or-later
#include "product/NotificationManager.h"

#include "core/Error.h"
#include "support/Await.h"
#include "support/RecordingLog.h"
#include "support/RecordingNotifications.h"

#include <gtest/gtest.h>

namespace ostrelle {

using namespace Qt::StringLiterals;

namespace {

using Text = std::optional<QString>;
using Interruption = DesktopNotification::Interruption;
using Sound = DesktopNotification::Sound;

class FakeCenter : public RecordingNotifications {
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
};

class NotificationManagerTest : public testing::Test {
protected:
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

TEST_F(NotificationManagerTest, EachKindHasItsOwnWordsThreadSoundAndLines) {
    const struct {
        DesktopNotification message;
        QString posted;
        QString refused;
    } rows[] = {
        {{u"Ostrelle Captioning Complete"_s, u"Successfully captioned 1 image."_s, u"ostrelle-processing"_s,
          Sound::normal, Interruption::normal},
         u"success"_s,
         u"success notification"_s},
        {{u"Ostrelle Captioning Failed"_s, u"Failed to caption 2 images. Check permissions and try again."_s,
          u"ostrelle-processing"_s, Sound::critical, Interruption::critical},
         u"critical failure"_s,
         u"failure notification"_s},
        {{u"Rate Limit Exceeded"_s,
          u"OpenAI API rate limit reached. 3 images failed. Processing will resume automatically when the limit resets."_s,
          u"ostrelle-ratelimit"_s, Sound::critical, Interruption::critical},
         u"rate limit failure"_s,
         u"rate limit notification"_s},
        {{u"Permission Error \u2014 Action Required"_s,
          u"Failed to write captions to 4 images. Please grant folder access permissions."_s,
          u"ostrelle-permissions"_s, Sound::critical, Interruption::critical},
         u"permission failure"_s,
         u"permission notification"_s},
        {{u"Configuration Required"_s,
          u"OpenAI API Key is missing. Please configure it in Settings to enable auto-processing."_s,
          u"ostrelle-config"_s, Sound::critical, Interruption::normal},
         u"configuration missing"_s,
         u"notification"_s},
    };
    QList<DesktopNotification> messages;
    QStringList lines;
    QStringList refusals;
    for (const auto& row : rows) {
        messages.append(row.message);
        lines.append(u"[NotificationManager] Posted %1 notification: %2"_s.arg(row.posted, row.message.body));
        refusals.append(u"[NotificationManager] Failed to post %1: Too many."_s.arg(row.refused));
    }
    postAll();
    EXPECT_EQ(center.posted, messages);
    center.refusesAll = true; // a failed post does not stop the next one
    postAll();
    EXPECT_EQ(center.posted, messages + messages);
    EXPECT_EQ(log.lines, lines + refusals);
}

TEST_F(NotificationManagerTest, FailuresNameThreeFilesAndAddTheDetail) {
    using Post = QCoro::Task<> (NotificationManager::*)(qint64, QStringList, Text);
    const Post failures = nullptr; // stands for postProcessingResult()
    const Post rateLimit = &NotificationManager::postRateLimitFailure;
    const Post permissions = &NotificationManager::postPermissionFailure;
    const QString resumes = u" Processing will resume automatically when the limit resets."_s;
    const QString grant = u" Please grant folder access permissions."_s;
    const QString check = u" Check permissions and try again."_s;
    const struct {
        Post post;
        qint64 count;
        QString files;
        Text detail;
        QString body;
    } rows[] = {
        {failures, 1, {}, {}, u"Failed to caption 1 image."_s + check},
        {failures, 3, u"a b c"_s, u""_s, u"Failed to caption 3 images. Files: a, b, c."_s},
        {failures, 9, u"a b %1 d %2 f g"_s, {}, u"Failed to caption 9 images. Files: a, b, %1 and 4 more."_s},
        {failures, 2, u"a"_s, u"Full."_s, u"Failed to caption 2 images. Files: a. Full."_s},
        {failures, 2, {}, u"Full."_s, u"Failed to caption 2 images."_s + check + u" Full."_s},
        {rateLimit, 1, u"a"_s, u"429"_s,
         u"OpenAI API rate limit reached. 1 image failed: a."_s + resumes + u" Details: 429"_s},
        {rateLimit, 5, u"a b c d"_s, u""_s,
         u"OpenAI API rate limit reached. 5 images failed: a, b, c and 1 more."_s + resumes +
             u" Details: "_s},
        {permissions, 1, u"a"_s, u"EACCES"_s,
         u"Failed to write captions to 1 image. Files: a."_s + grant + u" Error: EACCES"_s},
        {permissions, 2, {}, u""_s, u"Failed to write captions to 2 images."_s + grant + u" Error: "_s},
    };
    for (const auto& row : rows) {
        center.posted.clear();
        const QStringList files = row.files.split(u' ', Qt::SkipEmptyParts);
        await(row.post ? (manager.*row.post)(row.count, files, row.detail)
                       : manager.postProcessingResult(0, row.count, files, row.detail));
        ASSERT_EQ(center.posted.size(), 1);
        EXPECT_EQ(center.posted.first().body, row.body);
    }
}

TEST_F(NotificationManagerTest, ARunWithoutResultsIsNoNews) {
    await(manager.postProcessingResult(0, 0, {u"a"_s}, u"detail"_s));
    await(manager.postProcessingResult(-1, -1, {}));
    EXPECT_TRUE(center.posted.isEmpty());
    EXPECT_TRUE(log.lines.isEmpty());
}

TEST_F(NotificationManagerTest, WithoutPermissionNothingReachesTheCenter) {
    const QString noPermission = u"[NotificationManager] No permission to post notification"_s;
    EXPECT_TRUE(await(manager.requestPermission()));
    center.isPresent = false;
    EXPECT_FALSE(await(manager.requestPermission()));
    postAll();
    center.isUnreachable = true;
    EXPECT_FALSE(await(manager.requestPermission()));
    postAll();
    EXPECT_TRUE(center.posted.isEmpty());
    EXPECT_EQ(log.lines, QStringList{u"[NotificationManager] Permission granted: true"_s} +
                             QStringList{u"[NotificationManager] Permission granted: false"_s} +
                             QStringList(5, noPermission) +
                             QStringList{u"[NotificationManager] Permission request failed: No bus."_s} +
                             QStringList(5, noPermission));
}

} // namespace

} // namespace ostrelle
