// SPDX-License-Identifier: GPL-3.0-or-later
#include "metadata/XMPWriter.h"

#include <signal.h>

#include <QDir>
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
        return QFile::exists(sidecar) ? XMPWriter().readDefaultCaption(sidecar) : std::nullopt;
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

TEST_F(FolderCommandTest, WrongUsageEndsWithTwoAndASentence) {
    storeKey();
    const struct {
        QStringList arguments;
        QString words;
    } rows[] = {
        {{u"--folder"_s, u"none"_s}, u"There is no folder at none."_s},
        {{u"--watch"_s, u"none"_s}, u"There is no folder at none."_s},
        {{u"--folder"_s, u"in"_s}, u"No Code Replacements file is set."_s},
        {{u"--watch"_s, u"in"_s}, u"No Code Replacements file is set."_s},
        {{u"--folder"_s, u"in"_s, u"--watch"_s, u"in"_s}, u"--watch excludes --folder"_s},
        {{u"--folder"_s, u"in"_s, u"a.dng"_s}, u"--folder and --watch exclude files"_s},
        {{u"--only-new"_s, u"a.dng"_s}, u"--only-new belongs to --folder."_s},
    };
    for (const auto& row : rows) {
        const Result result = run(row.arguments);
        EXPECT_EQ(result.status, 2) << row.arguments.join(u' ').toStdString();
        EXPECT_TRUE(result.errors.contains(row.words)) << result.errors.toStdString();
    }
}

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
