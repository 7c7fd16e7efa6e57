// SPDX-License-Identifier: GPL-3.0-or-later
#include "state/PanelProgress.h"

#include "standins/MemoryDefaults.h"
#include "state/QueueCount.h"
#include "support/RecordingLog.h"
#include "support/VirtualClock.h"

#include <gtest/gtest.h>

namespace ostrelle {

using namespace Qt::StringLiterals;

namespace {

class PanelProgressTest : public testing::Test {
protected:
    /// One line per row: text, count and bar in percent.
    QStringList rows(SourceType source) const {
        QStringList lines;
        for (const ProgressRow& row : progressRows(source, status)) {
            const QString bar = row.fraction ? u"%1%"_s.arg(qRound(*row.fraction * 100)) : QString();
            lines.append(QStringList{row.text, row.count, bar}.join(u'|'));
        }
        return lines;
    }
    QStringList local() const { return rows(SourceType::local); }
    QStringList ftp() const { return rows(SourceType::ftp); }

    MemoryDefaults defaults;
    VirtualClock clock;
    RecordingLog log;
    StatusStore status{defaults, clock};
};

} // namespace

TEST_F(PanelProgressTest, WhileNothingGoesOnThereIsNothingToSee) {
    status.setLastMessage(u"Done."_s);
    status.setTotalBatchCount(3);
    EXPECT_EQ(ftp(), QStringList());
    status.setFtpStatusMessage(u"Error: Cannot open FTP stream"_s);
    EXPECT_EQ(local(), QStringList());
    EXPECT_EQ(ftp(), QStringList{u"Error: Cannot open FTP stream||"_s}) << "until the next poll";
}

TEST_F(PanelProgressTest, ALocalRunShowsItsBatches) {
    status.setIsProcessing(true);
    status.setTotalFiles(1);
    EXPECT_EQ(local(), (QStringList{u"1 images||"_s, u"Processing...||"_s, u"||0%"_s}));
    status.setLastMessage(u"Preparing"_s);
    EXPECT_EQ(local().at(1), u"Preparing||");
    status.setCurrentFileName(u"a.jpg"_s);
    EXPECT_EQ(local().at(1), u"a.jpg||");
    status.setTotalBatchCount(1);
    status.setCurrentBatchNumber(1);
    status.setCurrentBatchSize(1);
    EXPECT_EQ(local(), (QStringList{u"1 images||"_s, u"a.jpg||"_s, u"Batch 1: 1 image||0%"_s}));
    status.setTotalFiles(21);
    status.setTotalBatchCount(3);
    status.setCurrentBatchNumber(2);
    status.setCurrentBatchSize(10);
    status.setCurrentBatchStartIndex(10);
    status.setProcessed(14);
    EXPECT_EQ(local(), (QStringList{u"Processing 21 images total||"_s, u"a.jpg|14 of 21|"_s,
                                    u"Batch 2: 10 images||40%"_s, u"Batch 2/3||67%"_s}));
    status.beginTimedRun(10); // another one, to know how long an image takes
    clock.advance(std::chrono::seconds(50));
    status.recordBatchFinished();
    EXPECT_EQ(local().at(1), u"a.jpg|14 of 21 · about 35 s|");
    status.setTotalFiles(61);
    EXPECT_EQ(local().at(1), u"a.jpg|14 of 61 · about 4 min|");
    status.setIsWaitingForAPI(true);
    EXPECT_EQ(local().at(2).section(u'|', 0, 1), u"Batch 2: 10 images|waiting for captions");
}

TEST_F(PanelProgressTest, AutoModesImagesAreOneQueue) {
    UsageTracker usage(defaults, clock, log);
    QueueCount queue(status, usage, clock);
    queue.add(60);
    EXPECT_EQ(local(), (QStringList{u"60 images||"_s, u"Waiting for new files to be complete|0 of 60|0%"_s}));
    status.setIsProcessing(true);
    status.setTotalFiles(1); // the image that began last
    status.setCurrentFileName(u"a.jpg"_s);
    clock.advance(std::chrono::seconds(30));
    usage.recordUsage(1'000'000, 0);
    for (int image = 0; image < 15; ++image) {
        queue.finishOne();
    }
    const QString dollars = QString::number(UsageTracker::costOf(1'000'000, 0), 'f', 2);
    EXPECT_EQ(local().last(), u"a.jpg|15 of 60 · about 2 min · $"_s + dollars + u"|25%"_s);
    status.setIsPaused(true);
    EXPECT_TRUE(local().last().startsWith(u"Paused."_s));

    queue.withdraw(44);
    queue.finishOne();
    EXPECT_EQ(status.queue(), QueueProgress());
    queue.add(1);
    EXPECT_EQ(local().first(), u"1 images||") << "without those before";
}

TEST_F(PanelProgressTest, ABarNeverLeavesItsRange) {
    status.setIsProcessing(true);
    status.setTotalFiles(20);
    status.setTotalBatchCount(2);
    status.setCurrentBatchSize(10);
    status.setCurrentBatchStartIndex(10); // after ten skipped images
    EXPECT_EQ(local().at(2), u"Batch 0: 10 images||0%");
    status.setCurrentFileIndex(30);
    EXPECT_EQ(ftp().first(), u"||100%");
}

TEST_F(PanelProgressTest, ARemoteRunGoesBeforeTheTransfer) {
    status.setFtpIsChecking(true);
    EXPECT_EQ(ftp(), QStringList());
    status.setFtpStatusMessage(u"Checking"_s);
    EXPECT_EQ(ftp(), QStringList{u"Checking||"_s});
    status.setFtpDownloadProgress(0.25);
    status.setFtpTotalBytesToDownload(4000);
    EXPECT_EQ(ftp(), QStringList{u"Checking||"_s}); // no bar before the download
    status.setFtpIsChecking(false);
    status.setFtpIsDownloading(true);
    EXPECT_EQ(ftp(), (QStringList{u"Checking||"_s, u"0 bytes of 4.0 kB||25%"_s}));
    status.setFtpTotalBytesToDownload(0);
    status.setFtpStatusMessage(u"Error\nIts reason"_s);
    EXPECT_EQ(ftp(), (QStringList{u"Error||"_s, u"Its reason||"_s}));
    status.setIsProcessing(true);
    status.setCurrentFileName(u"a.jpg"_s);
    status.setCurrentFileIndex(3);
    status.setTotalFiles(4);
    EXPECT_EQ(ftp(), (QStringList{u"||75%"_s, u"Processing and Captioning: a.jpg|3/4|"_s}));
}

TEST_F(PanelProgressTest, AutoModeShowsWhenItScansNext) {
    EXPECT_EQ(autoModeLine(true, status), u"Auto Processing: On");
    status.setNextScanCountdown(7);
    EXPECT_EQ(autoModeLine(true, status), u"Auto Processing: On (next scan: 7s)");
    EXPECT_EQ(autoModeLine(false, status), std::nullopt);
}

} // namespace ostrelle
