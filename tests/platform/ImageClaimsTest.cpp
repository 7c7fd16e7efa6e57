// SPDX-License-Identifier: GPL-3.0-or-later
#include "platform/ImageClaims.h"

#include "platform/Files.h"
#include "support/FileFacts.h"
#include "support/Unprivileged.h"

#include <gtest/gtest.h>
#include <sys/wait.h>

#include <QDir>
#include <QFile>
#include <QTemporaryDir>
#include <QTimeZone>
#include <csignal>

namespace ostrelle {

using namespace Qt::StringLiterals;

namespace {

class ImageClaimsTest : public testing::Test {
protected:
    ImageClaimsTest() {
        QDir(folder.path()).mkdir(u"shoot"_s);
        QFile::link(folder.filePath(u"shoot"_s), folder.filePath(u"link"_s));
    }

    QString image(const QString& name) const { return folder.filePath(u"shoot/"_s + name); }

    QTemporaryDir folder;
    QString path = folder.filePath(u"made/on demand/claims"_s);
    ImageClaims claims{path};
    const QDateTime noon = QDateTime(QDate(2024, 10, 26), QTime(12, 0, 0, 123), QTimeZone::utc());
};

} // namespace

TEST_F(ImageClaimsTest, WhoComesSecondWaitsForTheFirstToEndAndLearnsWhatItDid) {
    const QString a = image(u"a.jpg"_s);
    const QString b = image(u"b.jpg"_s);
    std::shared_ptr<const ImageClaim> claim;
    const pid_t other = ::fork();
    if (other == 0) {
        claim = claims.tryClaim(a);
        claim->recordDone(noon);
        std::raise(SIGSTOP);
    }
    ::waitpid(other, nullptr, WUNTRACED);
    EXPECT_FALSE(claims.tryClaim(a));
    EXPECT_FALSE(claims.tryClaimAll({b, a}));
    EXPECT_FALSE(claims.tryClaim(folder.filePath(u"link/./a.jpg"_s))) << "another path to the folder";
    EXPECT_TRUE(claims.tryClaim(image(u"A.jpg"_s)));
    EXPECT_TRUE(claims.tryClaim(b)) << "a failed claim keeps no image";
    ::kill(other, SIGKILL);
    ::waitpid(other, nullptr, 0);
    claim = claims.tryClaim(a);
    ASSERT_TRUE(claim);
    EXPECT_EQ(claim->lastDone(), noon);
    EXPECT_FALSE(ImageClaims(path).tryClaim(a)) << "within one process, too";
    claim.reset();
    const auto all = claims.tryClaimAll({a, b, a});
    ASSERT_TRUE(all);
    EXPECT_EQ((*all)[0], (*all)[2]);
    EXPECT_FALSE((*all)[1]->lastDone());
}

TEST_F(ImageClaimsTest, AGarbledFileLosesNoClaim) {
    for (const QByteArray& garbage : {QByteArray(), QByteArray("x"), QByteArray(2'000'000, '\xff')}) {
        claims.tryClaim(image(u"a.jpg"_s))->recordDone(noon);
        replaceFile(path, garbage);
        const auto claim = claims.tryClaim(image(u"a.jpg"_s));
        EXPECT_FALSE(claim->lastDone());
        EXPECT_FALSE(claims.tryClaim(image(u"a.jpg"_s)));
        claim->recordDone(noon);
        EXPECT_EQ(claim->lastDone(), noon);
    }
    EXPECT_EQ(claims.takeNotice(), QString());
}

TEST_F(ImageClaimsTest, WithoutAFileEveryClaimIsGrantedAndTheLogToldOnce) {
    const UnprivilegedFolder home;
    setMode(home.path(), 0500);
    for (const QString& noFile : {home.filePath(u"data/claims"_s), home.path(), u"/dev/null"_s}) {
        ImageClaims unprotected(noFile);
        const auto claim = unprotected.tryClaim(image(u"a.jpg"_s));
        ASSERT_TRUE(claim && unprotected.tryClaim(image(u"a.jpg"_s))) << noFile.toStdString();
        claim->recordDone(noon);
        EXPECT_FALSE(claim->lastDone());
        EXPECT_TRUE(unprotected.takeNotice().contains(noFile));
        EXPECT_EQ(unprotected.takeNotice(), QString());
    }
}

} // namespace ostrelle
