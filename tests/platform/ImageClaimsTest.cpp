// SPDX-License-Identifier: GPL-3.0-or-later
#include "platform/ImageClaims.h"

#include "platform/Files.h"
#include "support/Unprivileged.h"

#include <gtest/gtest.h>
#include <sys/stat.h>
#include <sys/wait.h>

#include <QDir>
#include <QFile>
#include <QTemporaryDir>
#include <csignal>
#include <functional>

namespace ostrelle {

using namespace Qt::StringLiterals;

namespace {

/// Another program of the user, which lives until it is killed.
class OtherProgram {
public:
    /// Runs the function in the other process and returns when it is through.
    explicit OtherProgram(const std::function<void()>& function) {
        int through[2] = {};
        EXPECT_EQ(::pipe(through), 0);
        m_process = ::fork();
        if (m_process == 0) {
            function();
            [[maybe_unused]] const ssize_t told = ::write(through[1], "!", 1);
            for (;;) {
                ::pause();
            }
        }
        ::close(through[1]);
        char told = 0;
        EXPECT_EQ(::read(through[0], &told, 1), 1);
        ::close(through[0]);
    }
    ~OtherProgram() {
        ::kill(m_process, SIGKILL);
        ::waitpid(m_process, nullptr, 0);
    }
    OtherProgram(const OtherProgram&) = delete;
    OtherProgram& operator=(const OtherProgram&) = delete;

private:
    pid_t m_process;
};

class ImageClaimsTest : public testing::Test {
protected:
    ImageClaimsTest() { QDir(folder.path()).mkdir(u"shoot"_s); }

    QString image(const QString& name) const { return folder.filePath(u"shoot/"_s + name); }

    QTemporaryDir folder;
    QString path = folder.filePath(u"made/on demand/claims"_s);
    ImageClaims claims{path};
    const QDateTime noon = QDateTime(QDate(2024, 10, 26), QTime(12, 0, 0, 123), Qt::UTC);
};

} // namespace

TEST_F(ImageClaimsTest, AnImageIsClaimedOnceUntilItsClaimOrItsProgramEnds) {
    {
        std::shared_ptr<const ImageClaim> theirs;
        const OtherProgram other([&] { theirs = claims.tryClaim(image(u"a.jpg"_s)); });
        EXPECT_FALSE(claims.tryClaim(image(u"a.jpg"_s)));
        EXPECT_TRUE(claims.tryClaim(image(u"b.jpg"_s)));
        EXPECT_FALSE(claims.tryClaimAll({image(u"b.jpg"_s), image(u"a.jpg"_s)}));
        EXPECT_TRUE(claims.tryClaim(image(u"b.jpg"_s))) << "none of a claim that failed is kept";
    }
    std::shared_ptr<const ImageClaim> ours = claims.tryClaim(image(u"a.jpg"_s));
    ASSERT_TRUE(ours) << "the kill has freed it";
    EXPECT_FALSE(ImageClaims(path).tryClaim(image(u"a.jpg"_s))) << "within one process, too";
    ours.reset();
    const auto all = claims.tryClaimAll({image(u"a.jpg"_s), image(u"b.jpg"_s), image(u"a.jpg"_s)});
    ASSERT_TRUE(all);
    EXPECT_EQ((*all)[0], (*all)[2]);
    struct stat status{};
    ASSERT_EQ(::stat(QFile::encodeName(path).constData(), &status), 0);
    EXPECT_EQ(status.st_mode & 0777U, 0600U);
}

TEST_F(ImageClaimsTest, TwoPathsToAFolderAgreeAndNothingElseIsFolded) {
    ASSERT_TRUE(QFile::link(folder.filePath(u"shoot"_s), folder.filePath(u"link"_s)));
    const auto claim = claims.tryClaim(image(u"a.jpg"_s));
    EXPECT_FALSE(claims.tryClaim(folder.filePath(u"link/a.jpg"_s)));
    EXPECT_FALSE(claims.tryClaim(image(u"../link/./a.jpg"_s)));
    EXPECT_TRUE(claims.tryClaim(image(u"A.jpg"_s)));
}

TEST_F(ImageClaimsTest, WhoComesSecondLearnsWhenTheImageWasCaptioned) {
    {
        const OtherProgram other([&] { claims.tryClaim(image(u"a.jpg"_s))->recordDone(noon); });
    }
    EXPECT_EQ(claims.tryClaim(image(u"a.jpg"_s))->lastDone(), noon);
    EXPECT_FALSE(claims.tryClaim(image(u"b.jpg"_s))->lastDone());
    claims.tryClaim(image(u"a.jpg"_s))->recordDone(noon.addMSecs(1));
    EXPECT_EQ(claims.tryClaim(image(u"a.jpg"_s))->lastDone(), noon.addMSecs(1));
}

TEST_F(ImageClaimsTest, AGarbledFileLosesNothingButThat) {
    for (const QByteArray& garbage : {QByteArray(), QByteArray("x"), QByteArray(2'000'000, '\xff')}) {
        claims.tryClaim(image(u"a.jpg"_s))->recordDone(noon);
        replaceFile(path, garbage);
        auto claim = claims.tryClaim(image(u"a.jpg"_s));
        ASSERT_TRUE(claim);
        EXPECT_FALSE(claim->lastDone());
        EXPECT_FALSE(claims.tryClaim(image(u"a.jpg"_s)));
        claim->recordDone(noon);
        EXPECT_EQ(claim->lastDone(), noon);
    }
    EXPECT_EQ(claims.takeNotice(), QString());
}

TEST_F(ImageClaimsTest, WithoutAFileEveryClaimIsGrantedAndTheLogToldOnce) {
    const UnprivilegedFolder home;
    ASSERT_EQ(::chmod(QFile::encodeName(home.path()).constData(), 0500), 0);
    for (const QString& noFile : {home.filePath(u"data/claims"_s), home.path(), u"/dev/null"_s}) {
        ImageClaims unprotected(noFile);
        const auto first = unprotected.tryClaim(image(u"a.jpg"_s));
        ASSERT_TRUE(first && unprotected.tryClaim(image(u"a.jpg"_s))) << noFile.toStdString();
        first->recordDone(noon);
        EXPECT_FALSE(first->lastDone());
        EXPECT_TRUE(unprotected.takeNotice().contains(noFile));
        EXPECT_EQ(unprotected.takeNotice(), QString());
    }
}

} // namespace ostrelle
