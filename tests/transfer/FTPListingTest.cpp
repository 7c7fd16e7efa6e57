// SPDX-License-Identifier: GPL-3.0-or-later
#include "transfer/ftp/FTPListing.h"

#include "support/Corpus.h"
#include "support/RecordingLog.h"
#include "transfer/ftp/FTPError.h"

#include <gtest/gtest.h>

#include <QFile>
#include <QFileInfo>
#include <algorithm>

namespace ostrelle {

using namespace Qt::StringLiterals;

namespace {

QList<FTPFileInfo> parse(const QByteArray& listing) {
    RecordingLog log;
    return parseListing(listing, {}, log);
}

QByteArray contentsOf(const QString& path) {
    QFile file(path);
    EXPECT_TRUE(file.open(QIODevice::ReadOnly)) << path.toStdString();
    return file.readAll();
}

/// What the file listings.txt says of a listing.
QString summary(const QByteArray& listing) {
    RecordingLog log;
    try {
        const QList<FTPFileInfo> entries = parseListing(listing, {}, log);
        qint64 folders = 0;
        qint64 sizes = 0;
        qint64 letters = 0;
        for (const FTPFileInfo& entry : entries) {
            folders += entry.isDirectory ? 1 : 0;
            sizes += entry.size;
            letters += entry.name.toUcs4().size();
        }
        return u"%1 %2 %3 %4 %5"_s.arg(entries.size())
            .arg(folders)
            .arg(log.count(u"Could not parse line: "_s))
            .arg(sizes)
            .arg(letters);
    } catch (const FTPError& error) {
        return error.kind() == FTPError::Case::invalidListing ? u"invalid"_s : error.localizedDescription();
    }
}

} // namespace

TEST(FTPListing, ReadsEachForm) {
    const struct {
        QByteArray line;
        std::optional<FTPFileInfo> entry;
    } rows[] = {
        {"-rw-r--r-- 1 u g 1048576 Jan 1 12:00 IMG 1.JPG", {{u"IMG 1.JPG"_s, 1048576, false}}},
        {"  -rw-r--r--\t1 u g 5 Jan 1 12:00 a   b.JPG\t", {{u"a b.JPG"_s, 5, false}}},
        {"drwxr-xr-x 2 u g 4096 Jan 1 12:00 photos.jpg", {{u"photos.jpg"_s, 4096, true}}},
        {"-rw-r--r-- 1 u g +7 Jan 1 12:00 x", {{u"x"_s, 7, false}}},
        {"-rw-r--r-- 1 u g -7 Jan 1 12:00 x", {{u"x"_s, -7, false}}},
        {"-rw-r--r-- 1 u g abc Jan 1 12:00 x.jpg", {{u"u g abc Jan 1 12:00 x.jpg"_s, 1, false}}},
        {"-rw-r--r-- 1 u g 9223372036854775808 Jan 1 12:00 x",
         {{u"u g 9223372036854775808 Jan 1 12:00 x"_s, 1, false}}},
        {"drwxr-xr-x 2 ftp ftp 4096 Jan 1 12:00 .", {{u"ftp ftp 4096 Jan 1 12:00 ."_s, 2, false}}},
        {"12-05-25 10:31AM 1048576 IMG 1.JPG", {{u"IMG 1.JPG"_s, 1048576, false}}},
        {"12-05-25 10:31AM <DIR> photos", {}},
        {"x <DIR> 0 photos", {{u"photos"_s, 0, true}}},
        {"x DIR 0 photos", {{u"photos"_s, 0, true}}},
        {"x DIRS 0 photos", {{u"photos"_s, 0, false}}},
        {"total 12", {}},
        {"a 12 x", {}},
        {"a b 12 ..", {}},
        {"a b c 12", {}},
    };
    for (const auto& row : rows) {
        SCOPED_TRACE(row.line.toStdString());
        const QList<FTPFileInfo> expected = row.entry ? QList{*row.entry} : QList<FTPFileInfo>();
        EXPECT_EQ(parse(row.line), expected);
    }
}

TEST(FTPListing, TakesLinesHoweverTheyEnd) {
    EXPECT_EQ(parse("a b 1 x\r\n\r\na b 2 y\n   \na b 3 z").size(), 3);
    EXPECT_THROW(parse("a b 1 \xE9.jpg"), FTPError);
}

TEST(FTPListing, LogsNoPassword) {
    RecordingLog log;
    parseListing("p@ss p%40ss 1 p@ss", u"p@ss"_s, log);
    EXPECT_EQ(log.lines.value(0), u"[FTPClient] Raw directory listing:\n*** *** 1 ***"_s);
    EXPECT_EQ(log.count(u"p@ss"_s), 0);
    EXPECT_EQ(PasswordMask({}).applied(u"abc"_s), u"abc"_s);
}

TEST(FTPListing, ALineOfMillionsOfPartsIsNothingSpecial) {
    EXPECT_EQ(parse(QByteArray("a ").repeated(4'000'000)).size(), 0);
    EXPECT_EQ(parse("a b 1 " + QByteArray("a ").repeated(100'000)).size(), 1);
}

TEST(FTPListing, OfRealServers) {
    const QStringList files = corpusFiles(u"listings"_s);
    SKIP_WITHOUT_CORPUS(files);
    QStringList summaries;
    for (const QString& file : files) {
        summaries.append(QFileInfo(file).completeBaseName() + u' ' + summary(contentsOf(file)));
    }
    QStringList expected =
        QString::fromUtf8(contentsOf(QStringLiteral(LISTINGS))).split(u'\n', Qt::SkipEmptyParts);
    expected.removeIf([](const QString& line) { return line.startsWith(u'#'); });
    EXPECT_EQ(summaries.join(u'\n').toStdString(), expected.join(u'\n').toStdString());
}

} // namespace ostrelle
