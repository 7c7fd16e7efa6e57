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
    /// The lines of standard output so far, once there are `count`.
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
    EXPECT_EQ(all.status, 1); // because of the broken file
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
    const QByteArray cutPacket = jpegWithXmp(jpeg, "<x:xmpmeta><dc:description>");
    const QHash<QString, QByteArray> bad{{u"IMG_1.xmp"_s, "<x:xmpmeta xmlns:x='adobe:ns:meta/'><rdf:RDF"},
                                         {u"IMG_2.JPG"_s, cutPacket},
                                         {u"IMG_3.JPG"_s, jpeg.first(jpeg.size() / 2)},
                                         {u"IMG_4.dng"_s, dngFile(SportsScene(300, 200, 1)).first(5000)},
                                         {u"IMG_5.CR3"_s, "no picture"}};
    write(u"in/code-replacements.txt"_s, "12\tSam Abel\n");
    rawImage(u"in/IMG_1.dng"_s);
    rawImage(u"in/GOOD_1.dng"_s);
    write(u"in/GOOD_2.JPG"_s, jpeg);
    for (auto file = bad.begin(); file != bad.end(); ++file) {
        write(u"in/"_s + file.key(), *file);
    }
    const Result all = run({u"--folder"_s, u"in"_s});
    EXPECT_EQ(all.status, 1);
    EXPECT_EQ(all.output.count(u"captioned  "_s), 2) << all.output.toStdString();
    EXPECT_EQ(all.output.count(u"failed     "_s), 5) << all.output.toStdString();

    write(u"in/IMG_3.JPG"_s, jpeg);
    const Result again = run({u"--retry-failed"_s});
    EXPECT_EQ(again.status, 1);
    EXPECT_EQ(again.output.count(u"captioned"_s), 1) << again.output.toStdString();
    EXPECT_TRUE(again.output.contains(u"IMG_3.JPG"_s));
    EXPECT_FALSE(run({u"--retry-failed"_s}).output.contains(u"IMG_3.JPG"_s));
    write(u"in/IMG_3.JPG"_s, jpeg.first(jpeg.size() / 2));

    rawImage(u"in/GOOD_3.dng"_s);
    QProcess program;
    start(program, {u"--watch"_s, u"in"_s});
    const QStringList lines = readLines(program, 6);
    EXPECT_EQ(lines.filter(u"captioned  GOOD_3"_s).size(), 1) << lines.join(u'\n').toStdString();
    EXPECT_EQ(lines.filter(u"failed     "_s).size(), 5) << lines.join(u'\n').toStdString();
    ::kill(static_cast<pid_t>(program.processId()), SIGHUP);
    ASSERT_TRUE(program.waitForFinished(60'000));
    EXPECT_EQ(program.exitStatus(), QProcess::NormalExit);
    for (auto file = bad.begin(); file != bad.end(); ++file) {
        EXPECT_EQ(contentsOf(folder.filePath(u"in/"_s + file.key())), *file) << file.key().toStdString();
    }
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

TEST_F(FolderCommandTest, AnInterruptedRunFinishesWhatIsInTheWorks) {
    storeKey();
    constexpr int images = 40; // several batches
    for (int number = 0; number < images; ++number) {
        rawImage(u"in/IMG_%1.dng"_s.arg(number));
    }
    QProcess program;
    start(program, {u"--folder"_s, u"in"_s, u"--roster"_s, roster()});
    ASSERT_EQ(readLines(program, 1).size(), 1);
    ::kill(static_cast<pid_t>(program.processId()), SIGINT);
    ASSERT_TRUE(program.waitForFinished(60'000));
    EXPECT_EQ(program.exitStatus(), QProcess::NormalExit);
    EXPECT_EQ(program.exitCode(), 1);
    const QString errors = QString::fromUtf8(program.readAllStandardError());
    EXPECT_TRUE(errors.contains(u"Interrupted. Captioned: "_s)) << errors.toStdString();
    EXPECT_FALSE(errors.contains(u"not begun: 0."_s)) << errors.toStdString();
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
    EXPECT_EQ(filesIn(folder.filePath(u"in"_s)).size(), 4);
}

} // namespace ostrelle
