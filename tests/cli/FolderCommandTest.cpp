// SPDX-License-Identifier: GPL-3.0-or-later
#include "metadata/XMPWriter.h"
#include "standins/JpegBuilder.h"

#include <signal.h>

#include <QDir>
#include <QHash>
#include <QJsonArray>
#include <QJsonDocument>
#include <QJsonObject>

#include "CommandLineFixture.h"

namespace ostrelle {

using namespace Qt::StringLiterals;

namespace {

/// The program over a folder of images.
class FolderCommandTest : public CommandLineTest {
protected:
    FolderCommandTest() { EXPECT_TRUE(QDir(folder.path()).mkdir(u"in"_s)); }

    std::optional<QString> caption(const QString& name) const {
        const QString sidecar = folder.filePath(u"in/%1.xmp"_s.arg(name));
        return QFile::exists(sidecar) ? XMPWriter().readSidecar(sidecar, QTimeZone::utc()).facts.caption
                                      : std::nullopt;
    }
    /// The lines of standard output so far, once there are so many.
    static QStringList readLines(QProcess& program, qsizetype count) {
        QByteArray output;
        while (output.count('\n') < count && program.waitForReadyRead(60'000)) {
            output += program.readAllStandardOutput();
        }
        return QString::fromUtf8(output).split(u'\n', Qt::SkipEmptyParts);
    }
};

} // namespace

TEST_F(FolderCommandTest, CaptionsAFolderAndRemembersIt) {
    storeKey();
    write(u"in/code-replacements.txt"_s, "12\tSam Abel\n");
    for (int number = 0; number < 12; ++number) {
        rawImage(u"in/IMG_%1.dng"_s.arg(number));
    }
    write(u"in/broken.dng"_s, "no picture");
    const Result all = run({u"--folder"_s, u"in"_s, u"--json"_s});
    EXPECT_EQ(all.status, 1); // for the broken one
    EXPECT_EQ(all.output.count(u"\"result\":\"captioned\""_s), 12) << all.output.toStdString();
    EXPECT_TRUE(all.errors.contains(u"Done. Processed: 12, Failed: 1."_s)) << all.errors.toStdString();
    EXPECT_TRUE(caption(u"IMG_7"_s).value_or(QString()).contains(u"IMG_7.dng"_s));

    rawImage(u"in/IMG_12.dng"_s);
    const Result onlyNew = run({u"--folder"_s, u"in"_s, u"--only-new"_s});
    EXPECT_EQ(onlyNew.output.count(u"captioned  "_s), 1) << onlyNew.output.toStdString();
    EXPECT_TRUE(caption(u"IMG_12"_s));
}

TEST_F(FolderCommandTest, ABadFileEndsNoRun) {
    storeKey();
    const QByteArray jpeg = jpegFile(SportsScene(300, 200, 1).image());
    const QByteArray cutPacket = jpeg.first(2) + "\xFF\xE1" + QByteArray("\0\x3a", 2) +
                                 QByteArray("http://ns.adobe.com/xap/1.0/\0", 29) +
                                 "<x:xmpmeta><dc:description>" + jpeg.sliced(2);
    const QHash<QString, QByteArray> bad{{u"IMG_1.xmp"_s, "<x:xmpmeta xmlns:x='adobe:ns:meta/'><rdf:RDF"},
                                         {u"IMG_2.JPG"_s, cutPacket},
                                         {u"IMG_3.JPG"_s, jpeg.first(jpeg.size() / 2)},
                                         {u"IMG_4.dng"_s, dngFile(SportsScene(300, 200, 1)).first(5000)},
                                         {u"IMG_5.CR3"_s, "no picture"}};
    const auto makeFolder = [&](const QString& name) {
        QDir(folder.path()).mkdir(name);
        write(name + u"/code-replacements.txt"_s, "12\tSam Abel\n");
        rawImage(name + u"/IMG_1.dng"_s);
        rawImage(name + u"/GOOD_1.dng"_s);
        write(name + u"/GOOD_2.JPG"_s, jpeg);
        for (auto file = bad.begin(); file != bad.end(); ++file) {
            write(name + u'/' + file.key(), *file);
        }
    };
    const auto expectGood = [&](const QString& name, const QString& output) {
        EXPECT_EQ(output.count(u"captioned  "_s), 2) << output.toStdString();
        EXPECT_EQ(output.count(u"failed     "_s), 5) << output.toStdString();
        for (auto file = bad.begin(); file != bad.end(); ++file) {
            QFile now(folder.filePath(name + u'/' + file.key()));
            ASSERT_TRUE(now.open(QIODevice::ReadOnly));
            EXPECT_EQ(now.readAll(), *file) << file.key().toStdString();
        }
    };
    makeFolder(u"folder"_s);
    const Result all = run({u"--folder"_s, u"folder"_s});
    EXPECT_EQ(all.status, 1);
    expectGood(u"folder"_s, all.output);

    makeFolder(u"files"_s);
    QStringList files = {u"--roster"_s, roster()};
    for (const QString& name :
         QDir(folder.filePath(u"files"_s)).entryList({u"*.dng"_s, u"*.jpg"_s, u"*.cr3"_s})) {
        files.append(u"files/"_s + name);
    }
    const Result each = run(files);
    EXPECT_EQ(each.status, 1);
    expectGood(u"files"_s, each.output);

    makeFolder(u"watched"_s);
    QProcess program;
    start(program, {u"--watch"_s, u"watched"_s});
    const QStringList lines = readLines(program, 7);
    ::kill(static_cast<pid_t>(program.processId()), SIGHUP);
    ASSERT_TRUE(program.waitForFinished(60'000));
    EXPECT_EQ(program.exitStatus(), QProcess::NormalExit);
    expectGood(u"watched"_s, lines.join(u'\n'));
}

TEST_F(FolderCommandTest, SaysWhatCannotBeSaved) {
    storeKey();
    write(u"in/code-replacements.txt"_s, "12\tAnn L\xF6w\n");
    rawImage(u"in/IMG_1.dng"_s);
    EXPECT_TRUE(QDir(folder.path()).mkdir(u"data"_s));
    write(u"data/Ostrelle Captions"_s, "where the manifest's folder should be");
    const Result result = run({u"--folder"_s, u"in"_s, u"--json"_s});
    EXPECT_EQ(result.status, 1);
    EXPECT_TRUE(result.errors.contains(u"Which images have been captioned could not be saved"_s))
        << result.errors.toStdString();
    const QString warning =
        u"The names in code-replacements.txt will not be used: it is not UTF-8. Save it as UTF-8."_s;
    EXPECT_EQ(result.errors.count(warning), 1) << result.errors.toStdString();
    const QJsonObject line = QJsonDocument::fromJson(result.output.toUtf8()).object();
    EXPECT_EQ(line[u"result"_s].toString(), u"captioned"_s) << result.output.toStdString();
    EXPECT_EQ(line[u"warnings"_s].toArray().at(0).toString(), warning);
}

TEST_F(FolderCommandTest, WatchesAFolderUntilItIsInterrupted) {
    storeKey();
    QProcess program;
    start(program, {u"--watch"_s, u"in"_s, u"--roster"_s, roster()});
    rawImage(u"in/IMG_1.dng"_s);
    rawImage(u"in/IMG_2.dng"_s);
    const QStringList lines = readLines(program, 2);
    ASSERT_EQ(lines.size(), 2);
    EXPECT_TRUE(lines.filter(u"captioned  IMG_1.dng  Football"_s).size() == 1) << lines[0].toStdString();
    ::kill(static_cast<pid_t>(program.processId()), SIGTERM);
    ASSERT_TRUE(program.waitForFinished(60'000));
    EXPECT_EQ(program.exitStatus(), QProcess::NormalExit);
    EXPECT_EQ(program.exitCode(), 0) << program.readAllStandardError().toStdString();
    EXPECT_TRUE(caption(u"IMG_1"_s));
    EXPECT_TRUE(caption(u"IMG_2"_s));
    EXPECT_EQ(QDir(folder.filePath(u"in"_s)).entryList(QDir::Files | QDir::Hidden).size(), 4);
}

} // namespace ostrelle
