// SPDX-License-Identifier: GPL-3.0-or-later
#include "services/UpdateChecker.h"

#include "services/PromptServiceFixture.h"
#include "standins/MemoryDefaults.h"
#include "support/Await.h"

#include <gtest/gtest.h>
#include <openssl/evp.h>

#include <chrono>
#include <memory>

namespace ostrelle {

using namespace Qt::StringLiterals;
using Kind = UpdateResult::Kind;

namespace {

class UpdateCheckerTest : public testing::Test {
protected:
    UpdateCheckerTest() {
        QObject::connect(&checker, &UpdateChecker::checked, &checker,
                         [this](const UpdateResult& found) { results.append(found); });
    }
    ~UpdateCheckerTest() { EVP_PKEY_free(m_key); }

    QByteArray publicKey() const {
        QByteArray key(32, '\0');
        std::size_t size = 32;
        EVP_PKEY_get_raw_public_key(m_key, reinterpret_cast<unsigned char*>(key.data()), &size);
        return key;
    }
    QByteArray signedFeed(const QByteArray& json) const {
        QByteArray signature(64, '\0');
        std::size_t size = 64;
        EVP_MD_CTX* context = EVP_MD_CTX_new();
        EVP_DigestSignInit(context, nullptr, nullptr, nullptr, m_key);
        EVP_DigestSign(context, reinterpret_cast<unsigned char*>(signature.data()), &size,
                       reinterpret_cast<const unsigned char*>(json.constData()),
                       static_cast<std::size_t>(json.size()));
        EVP_MD_CTX_free(context);
        return signature.toBase64() + '\n' + json;
    }
    static QByteArray feed(const QByteArray& version, const QByteArray& published) {
        return "{\"version\":\"" + version + "\",\"published\":\"" + published + "\",\"notes\":\"Faster.\"}";
    }
    UpdateResult resultOf(const QByteArray& body) {
        server.answer =
            "HTTP/1.1 200 OK\r\nConnection: close\r\nContent-Length: " + QByteArray::number(body.size()) +
            "\r\n\r\n" + body;
        checker.checkForUpdates();
        EXPECT_FALSE(checker.canCheckForUpdates());
        await(checker.finished());
        EXPECT_TRUE(checker.canCheckForUpdates());
        return results.last();
    }

private:
    EVP_PKEY* m_key = EVP_PKEY_Q_keygen(nullptr, nullptr, "ED25519");

protected:
    CannedServer server;
    MemoryDefaults defaults;
    VirtualClock clock;
    RecordingLog log;
    UpdateChecker checker{{.url = server.url(), .publicKey = publicKey(), .current = QVersionNumber(1, 2, 0)},
                          defaults,
                          clock,
                          log};
    QList<UpdateResult> results;
};

} // namespace

TEST_F(UpdateCheckerTest, OnlyASignedFeedThatGoesForwardIsBelieved) {
    const QByteArray good = feed("1.3.0", "2026-11-24T12:00:00Z");
    const struct {
        QByteArray body;
        Kind kind;
        const char* reason;
    } rows[] = {
        {signedFeed(good), Kind::newer, ""},
        {signedFeed(feed("1.2.0", "2026-11-24T12:00:00Z")), Kind::current, ""},
        {signedFeed(feed("1.10.0", "2026-11-25T12:00:00Z")), Kind::newer, ""},
        {signedFeed(good), Kind::failed, "older than one that was seen"},
        {signedFeed(feed("1.1.9", "2026-11-26T12:00:00Z")), Kind::failed, "lower version"},
        {good, Kind::failed, "not signed"},
        {signedFeed(good) + ' ', Kind::failed, "not signed"},
        {signedFeed(good).mid(4), Kind::failed, "not signed"},
        {"\n" + good, Kind::failed, "not signed"},
        {"", Kind::failed, "not signed"},
        {signedFeed("[]"), Kind::failed, "cannot be read"},
        {signedFeed(feed("", "2026-11-27T12:00:00Z")), Kind::failed, "cannot be read"},
        {signedFeed(feed("1.4.0", "tomorrow")), Kind::failed, "cannot be read"},
        {signedFeed(QByteArray(1'100'000, ' ')), Kind::failed, "larger than 1 MB"},
    };
    for (const auto& row : rows) {
        const UpdateResult result = resultOf(row.body);
        EXPECT_EQ(result.kind, row.kind) << row.body.left(200).constData() << result.reason.toStdString();
        EXPECT_TRUE(result.reason.contains(QString::fromLatin1(row.reason))) << result.reason.toStdString();
    }
    EXPECT_EQ(results.first().version + results.first().notes, u"1.3.0Faster.");
}

TEST_F(UpdateCheckerTest, ItAsksByItselfOnceADayAndNeverWithoutAnAddress) {
    server.answer = "HTTP/1.1 404 No\r\nConnection: close\r\nContent-Length: 0\r\n\r\n";
    for (int hour = 0; hour < 50; ++hour) {
        checker.checkForUpdatesInBackground();
        await(checker.finished());
        clock.advance(std::chrono::hours(1));
    }
    EXPECT_EQ(server.heads.size(), 3);
    EXPECT_FALSE(results.last().isAsked);
    UpdateChecker without({}, defaults, clock, log);
    without.checkForUpdates();
    EXPECT_TRUE(without.canCheckForUpdates());
    UpdateChecker plain({.url = QUrl(u"http://example.org/feed"_s)}, defaults, clock, log);
    plain.checkForUpdates();
    await(plain.finished());
    EXPECT_TRUE(log.lines.last().contains(u"not a secure one"_s));
}

} // namespace ostrelle
