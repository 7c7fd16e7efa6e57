// SPDX-License-Identifier: GPL-3.0-or-later
#include "transfer/remote/ServerSource.h"

#include "pipeline/PipelineFixture.h"
#include "transfer/ScriptedStream.h"

#include <map>

namespace ostrelle {

using namespace Qt::StringLiterals;
using std::chrono::milliseconds;
using std::chrono::seconds;

namespace {

/// The whole program with a server in its settings. The files in `remote` are its folder.
class ServerSourceTest : public PipelineTest {
protected:
    ServerSourceTest() {
        makeStream = [this](const FtpAddress& address) { return streamOf(address); };
        settings.setSourceType(SourceType::ftp);
        settings.setFtpHost(u"server"_s);
        settings.setFtpUsername(u"camera"_s);
        settings.setFtpPassword(u"secret"_s);
        settings.setFtpPath(u"/pics"_s);
        settings.setDestinationFolder(destination);
        await(settings.pathsSettled());
    }
    ~ServerSourceTest() override {
        program.server.abandon();
        turns.close();
        const QCoro::Task<> finished = program.server.finished();
        driveUntil([&finished] { return finished.isReady(); }, seconds(1));
    }

    std::unique_ptr<FtpStream> streamOf(const FtpAddress& address) {
        StreamScript script;
        if (address.path.endsWith(u'/')) {
            ++listings;
            for (const auto& [name, bytes] : remote) {
                script.reads.append("-rw-r--r-- 1 u g " + QByteArray::number(bytes.size()) + " Jan 1 12:00 " +
                                    name.toUtf8() + "\r\n");
            }
        } else {
            script.reads.append(remote.at(address.path.section(u'/', -1)));
        }
        return std::make_unique<ScriptedStream>(script, &closings);
    }
    void watchUntil(const std::function<bool()>& condition) {
        program.autoMode.updateAutoMode(true, SourceType::ftp, std::nullopt);
        driveUntil(condition, milliseconds(100));
    }
    QString local(const QString& name) const { return destination + u'/' + name; }
    bool isCaptioned(const QString& name) const {
        return QFile::exists(local(name)) && !captionOf(local(name)).value_or(QString()).isEmpty();
    }

    const QString destination = folderWith(u"from server"_s);
    std::map<QString, QByteArray> remote = {{u"IMG_1.DNG"_s, dngFile(SportsScene(320, 200, 1))},
                                            {u"IMG_2.JPG"_s, jpegFile(SportsScene(320, 200, 2).image())}};
    int listings = 0;
    int closings = 0;
};

} // namespace

TEST_F(ServerSourceTest, WhatIsOnTheServerIsCaptioned) {
    sidecar("Stub of the camera", u"stub.xmp"_s);
    remote[u"IMG_1.xmp"_s] = read(u"stub.xmp"_s);
    qint64 mostFiles = 0;
    QObject::connect(&status, &StatusStore::totalFilesChanged, &status,
                     [&] { mostFiles = std::max(mostFiles, status.totalFiles()); });
    watchUntil([this] { return reports.size() == 2; });
    EXPECT_EQ(reports.value(0).captionBefore, u"Stub of the camera"_s) << "the sidecar came first";
    EXPECT_TRUE(isCaptioned(u"IMG_1.DNG"_s));
    EXPECT_TRUE(isCaptioned(u"IMG_2.JPG"_s));
    EXPECT_EQ(mostFiles, 2);
    driveUntil([this] { return !status.isProcessing(); });
    EXPECT_TRUE(manifest.isProcessedByName(u"IMG_1.DNG"_s) && manifest.isProcessedByName(u"IMG_2.JPG"_s));
    EXPECT_TRUE(console.has(u"[FTPWatcher] Found 2 new files from FTP"_s));
    const int before = listings;
    driveUntil(
        [&] { return listings > before && console.has(u"[FTPWatcher] Found 0 new files from FTP"_s); });
    EXPECT_EQ(model.requests().size(), 2) << "nobody pays twice";
    EXPECT_TRUE(console.lines.filter(u"secret"_s).isEmpty());
}

TEST_F(ServerSourceTest, ImagesThatFailAreLeftAndTheOthersGoOn) {
    remote[u"IMG_0.JPG"_s] = "no picture";
    watchUntil([this] { return reports.size() == 3; });
    EXPECT_EQ(reports.value(0).kind, OutcomeKind::unwritable);
    EXPECT_TRUE(isCaptioned(u"IMG_2.JPG"_s));
    EXPECT_TRUE(console.has(u"[AppDelegate] ✗ Failed to process IMG_0.JPG"_s));
}

TEST_F(ServerSourceTest, AnImageThatCameDownShortIsCaptionedOnceItIsWhole) {
    const QByteArray whole = std::exchange(remote[u"IMG_2.JPG"_s], {});
    remote[u"IMG_2.JPG"_s] = whole.chopped(2); // which a decoder would hardly notice
    watchUntil([this] { return reports.size() == 2; });
    EXPECT_EQ(reports.value(1).reason, u"The file is cut short."_s);
    EXPECT_FALSE(manifest.isProcessedByName(u"IMG_2.JPG"_s));
    remote[u"IMG_2.JPG"_s] = whole;
    driveUntil([this] { return reports.size() == 3; }, milliseconds(100));
    EXPECT_TRUE(isCaptioned(u"IMG_2.JPG"_s));
}

TEST_F(ServerSourceTest, AFullDownloadEndsWithASummary) {
    program.server.downloadAll();
    driveUntil([this] { return !notificationCenter.posted.isEmpty(); }, milliseconds(100));
    EXPECT_TRUE(isCaptioned(u"IMG_1.DNG"_s) && isCaptioned(u"IMG_2.JPG"_s));
    EXPECT_EQ(status.ftpStatusMessage(), u"Finished captioning 2 files"_s);
    EXPECT_FALSE(status.isProcessing());
    EXPECT_TRUE(
        console.has(u"[AppDelegate] Manual FTP download notification sent: 2 successful, 0 failed"_s));
    EXPECT_EQ(listings, 1) << "it waits for no upload";
}

TEST_F(ServerSourceTest, AFullDownloadSaysWhatIsMissing) {
    settings.setCodeReplacementsFile(std::nullopt);
    await(settings.pathsSettled());
    program.server.downloadAll();
    EXPECT_EQ(status.ftpStatusMessage(), u"Code Replacements File required"_s);
    settings.setFtpPassword({});
    program.server.downloadAll();
    EXPECT_EQ(status.ftpStatusMessage(), u"FTP configuration incomplete"_s);
    EXPECT_EQ(listings, 0);
}

TEST_F(ServerSourceTest, WhenTheProgramEndsNothingOfAFileIsLeft) {
    remote[u"IMG_3.JPG"_s] = QByteArray(50'000'000, 'x');
    program.server.downloadAll();
    driveUntil([this] { return status.ftpBytesDownloaded() > 0 || status.ftpFilesDownloaded() == 2; });
    const QCoro::Task<> finished = program.finishWork();
    driveUntil([&finished] { return finished.isReady(); });
    EXPECT_LT(status.ftpFilesDownloaded(), 3);
    for (const QString& name : QDir(destination).entryList(QDir::Files | QDir::Hidden)) {
        EXPECT_FALSE(name.startsWith(u'.')) << name.toStdString();
    }
}

} // namespace ostrelle
