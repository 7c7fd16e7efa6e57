// SPDX-License-Identifier: GPL-3.0-or-later
#include "transfer/LocalScanFixture.h"

#include <unistd.h>

namespace ostrelle {

using namespace Qt::StringLiterals;

namespace {

TEST_F(LocalScanTest, TakesANewRawImageAllTheWay) {
    write(u"IMG_1.CR2"_s);
    look();
    EXPECT_TRUE(tracker.isProcessing(u"IMG_1.CR2"_s));
    finishAll();

    EXPECT_EQ(printed(),
              QStringList({
                  u"[AppDelegate] Scanning directory: ingest"_s,
                  u"[AppDelegate] Found 1 image files total (1 RAW, 0 JPEG)"_s,
                  u"[AppDelegate]   IMG_1.CR2: Created XMP sidecar"_s,
                  u"[AppDelegate]   IMG_1.CR2: No caption or caption was cleared, needs processing"_s,
                  u"[AppDelegate]   ✓ Queuing IMG_1.CR2 for processing"_s,
                  u"[AppDelegate]   → Task started for IMG_1.CR2"_s,
                  u"[AppDelegate] Scan complete: 1 to process, 0 processing, 0 previously processed, 0 have "
                  "captions, 0 no XMP"_s,
                  u"[AppDelegate]   → Calling analyzeSingle for IMG_1.CR2"_s,
                  u"[AppDelegate]   → analyzeSingle returned true for IMG_1.CR2"_s,
                  u"[AppDelegate]   ✓ Completed IMG_1.CR2 - SUCCESS"_s,
                  u"[AppDelegate] Auto-processing batch complete: 1 processed, 0 failed"_s,
              }));
    EXPECT_TRUE(QFile::exists(path(u"IMG_1.xmp"_s)));
    EXPECT_FALSE(tracker.isProcessing(u"IMG_1.CR2"_s));
    EXPECT_TRUE(await(manifest.isProcessed(path(u"IMG_1.CR2"_s))));
    EXPECT_EQ(access.held, QStringList());
    EXPECT_EQ(access.all, QStringList({ingest, ingest})) << "one for the scan, one for the task";
}

TEST_F(LocalScanTest, DecidesByTheCaption) {
    const QString cleared = u"No caption or caption was cleared, needs processing"_s;
    const struct {
        QString image;
        std::optional<QByteArray> caption; ///< in the sidecar
        QString words;
    } rows[] = {
        {u"a.CR2"_s, "  " + "\xF0\x9F\x91\x8D\xF0\x9F\x8F\xBD"_ba.repeated(50),
         u"Caption too short (50 chars), needs processing"_s},
        {u"b.CR2"_s, QByteArray(51, 'x') + " ", u"Already has caption (51 chars)"_s},
        {u"c.CR2"_s, " \n\xC2\xA0", cleared},
        {u"d.CR2"_s, "<broken", cleared},
        {u"e.JPG"_s, QByteArray(60, 'x'), cleared},
        {u"f.Jpeg"_s, std::nullopt, u"Already has caption (51 chars)"_s},
    };
    for (const auto& row : rows) {
        write(row.image);
        if (row.caption) {
            sidecar(*row.caption, row.image.first(1) + u".xmp"_s);
        }
    }
    write(u"f.Jpeg"_s, jpegWithXmp(jpegFile(SportsScene(64, 48, 1).image()), contentsOf(path(u"b.xmp"_s))));
    runScan();

    for (const auto& row : rows) {
        EXPECT_TRUE(isPrinted(u"  %1: %2"_s.arg(row.image, row.words))) << row.image.toStdString();
    }
    begun.sort();
    EXPECT_EQ(begun, QStringList({u"a.CR2"_s, u"c.CR2"_s, u"d.CR2"_s, u"e.JPG"_s}));
    EXPECT_EQ(console.count(
                  u"Scan complete: 4 to process, 0 processing, 0 previously processed, 2 have captions"_s),
              1);
    EXPECT_FALSE(QFile::exists(path(u"f.xmp"_s))) << "a JPEG has no sidecar";
}

TEST_F(LocalScanTest, ASidecarThatCannotBeMadeStopsNoOtherImage) {
    write(u"a.CR2"_s);
    write(u"b.JPG"_s);
    setMode(ingest, 0500);
    runScan();
    setMode(ingest, 0700);

    EXPECT_EQ(console.count(u"[AppDelegate]   a.CR2: Failed to create XMP sidecar: Could not write "_s), 1);
    EXPECT_EQ(begun, QStringList(u"b.JPG"_s));
    EXPECT_EQ(
        console.count(
            u"Scan complete: 1 to process, 0 processing, 0 previously processed, 0 have captions, 1 no XMP"_s),
        1);
}

TEST_F(LocalScanTest, AFolderThatVanishesIsOneLine) {
    QDir(ingest).removeRecursively();
    runScan();
    EXPECT_EQ(
        printed(),
        QStringList(
            u"[AppDelegate] Error scanning directory: Could not read %1: No such file or directory."_s.arg(
                ingest)));
    EXPECT_EQ(access.held, QStringList());
    EXPECT_EQ(status.sourceTrouble(), u"The watch folder is not there: "_s + ingest);
    QDir().mkpath(ingest);
    runScan();
    EXPECT_EQ(status.sourceTrouble(), std::nullopt) << "it is back";
}

TEST_F(LocalScanTest, AnImageThatVanishesIsSkippedAndGetsNoSidecar) {
    write(u"a.CR2"_s);
    console.onLine = [this](const QString& line) {
        if (line.contains(u"Found 1 image"_s)) {
            QFile::remove(path(u"a.CR2"_s));
        }
    };
    runScan();
    EXPECT_TRUE(isPrinted(u"  a.CR2: No longer there, skipping"_s));
    EXPECT_TRUE(QDir(ingest).isEmpty());
    EXPECT_TRUE(begun.isEmpty());
}

TEST_F(LocalScanTest, AFailedImageRestsForAMinute) {
    write(u"a.JPG"_s);
    results.insert(u"a.JPG"_s, OutcomeKind::failed);
    runScan();
    EXPECT_TRUE(isPrinted(u"  → analyzeSingle returned false for a.JPG"_s));
    EXPECT_TRUE(isPrinted(u"  ✓ Completed a.JPG - FAILED"_s));
    EXPECT_TRUE(isPrinted(u"Auto-processing batch complete: 0 processed, 1 failed"_s));
    look();
    EXPECT_TRUE(isPrinted(u"  a.JPG: Recently failed, skipping"_s));
    EXPECT_EQ(console.count(u"Scan complete: 0 to process, 0 processing, 0 previously processed"_s), 1);

    clock.advance(ProcessingTracker::retryWindow);
    look();
    EXPECT_EQ(tracker.timeSinceFailure(u"a.JPG"_s), std::nullopt);
    finishAll();
    EXPECT_EQ(begun.size(), 2);
}

TEST_F(LocalScanTest, AnImageThatCannotBeEditedWaitsForAChange) {
    write(u"a.JPG"_s);
    results.insert(u"a.JPG"_s, OutcomeKind::unwritable);
    runScan();
    clock.advance(std::chrono::hours(1));
    runScan();
    EXPECT_EQ(begun.size(), 1);
    EXPECT_TRUE(isPrinted(u"  a.JPG: Cannot be edited, left alone until it or its folder changes"_s));
    setMode(ingest, 0711);
    runScan();
    EXPECT_EQ(begun.size(), 2);
    clock.advance(std::chrono::hours(1));
    results.insert(u"a.JPG"_s, OutcomeKind::changed);
    write(u"a.JPG"_s, "another picture");
    runScan();
    EXPECT_EQ(begun.size(), 3);
    runScan();
    EXPECT_EQ(begun.size(), 4) << "a changed image has not failed";
}

TEST_F(LocalScanTest, ACaptionedImageIsNotReadAgainUntilItIsReplaced) {
    write(u"a.CR2"_s);
    runScan();
    sidecar("", u"a.xmp"_s); // caption deleted by hand, which is respected
    runScan();
    EXPECT_EQ(begun.size(), 1);
    EXPECT_EQ(console.count(u"Scan complete: 0 to process, 0 processing, 1 previously processed"_s), 1);
    EXPECT_EQ(console.count(u"batch complete"_s), 1) << "without an image there is no batch";

    write(u"a.CR2"_s, "another picture");
    runScan();
    EXPECT_EQ(begun.size(), 2);
}

TEST_F(LocalScanTest, AnImageCaptionedElsewhereIsReadTwiceAndThenWhenItChanges) {
    const QByteArray caption(51, 'x');
    const auto readings = [this] { return console.count(u"Already has caption"_s); };
    write(u"a.CR2"_s);
    sidecar(caption, u"a.xmp"_s);
    for (int scans = 1; scans <= 4; ++scans) {
        runScan();
        EXPECT_EQ(readings(), std::min(scans, 2));
        EXPECT_EQ(console.count(u"1 have captions"_s), scans);
        clock.advance(std::chrono::seconds(10));
    }

    sidecar(caption, u"a.xmp"_s);
    runScan();
    EXPECT_EQ(readings(), 3);
    runScan();
    EXPECT_EQ(readings(), 4) << "too soon after the first reading to trust the stamp";
    clock.advance(std::chrono::seconds(10));
    runScan();
    sidecar("", u"a.xmp"_s);
    runScan();
    EXPECT_EQ(begun, QStringList{u"a.CR2"_s});
}

TEST_F(LocalScanTest, CaptionsEachOfManyImagesOnceHoweverManyScansOverlap) {
    for (int number = 0; number < 300; ++number) {
        write(u"IMG_%1.%2"_s.arg(number).arg(number % 2 == 0 ? u"JPG"_s : u"NEF"_s));
    }
    duration = std::chrono::seconds(25);
    scan.startScan(ingest);
    scan.startScan(ingest);
    for (int second = 0; second < 40; ++second) {
        clock.advance(std::chrono::seconds(1));
        look();
    }
    finishAll();

    EXPECT_EQ(begun.size(), 300);
    EXPECT_EQ(QSet<QString>(begun.begin(), begun.end()).size(), 300);
    EXPECT_EQ(console.count(u"Auto-processing batch complete: 300 processed, 0 failed"_s), 1);
    EXPECT_TRUE(access.held.isEmpty());
}

// What was read of an image may be out of date by the time the scan decides.
TEST_F(LocalScanTest, AnImageThatWentThroughTheWorksMeanwhileIsLeftToTheNextScan) {
    write(u"a.JPG"_s);
    write(u"b.JPG"_s);
    tracker.finish(u"a.JPG"_s, false);
    std::unique_ptr<HangingThreads> share;
    console.onLine = [&](const QString& line) {
        if (!line.contains(u"a.JPG: Recently failed"_s)) {
            return;
        }
        share = std::make_unique<HangingThreads>(threads.of(ingest));
        QMetaObject::invokeMethod(
            &events,
            [&] { // while b.JPG waits to be read
                tracker.begin(u"b.JPG"_s);
                tracker.finish(u"b.JPG"_s, true);
                share.reset();
            },
            Qt::QueuedConnection);
    };
    runScan();
    EXPECT_TRUE(isPrinted(u"  b.JPG: Already processing"_s));
    EXPECT_EQ(console.count(u"0 to process, 1 processing"_s), 1);
    EXPECT_TRUE(begun.isEmpty());

    console.onLine = {};
    runScan();
    EXPECT_TRUE(begun.contains(u"b.JPG"_s));
}

TEST_F(LocalScanTest, AnImageThatChangesOrGoesWhileItRestsIsNotTried) {
    write(u"a.JPG"_s, "half");
    write(u"b.JPG"_s);
    look();
    write(u"a.JPG"_s, "half and more");
    QFile::remove(path(u"b.JPG"_s));
    EXPECT_EQ(status.queue().total, 2);
    finishAll();
    EXPECT_EQ(status.queue().total, 0);
    EXPECT_TRUE(begun.isEmpty());
    EXPECT_TRUE(isPrinted(u"  a.JPG: Still being written, left for the next scan"_s));
    EXPECT_TRUE(isPrinted(u"Auto-processing batch complete: 0 processed, 0 failed"_s));
    EXPECT_EQ(tracker.timeSinceFailure(u"b.JPG"_s), std::nullopt);
    EXPECT_FALSE(tracker.isProcessing(u"b.JPG"_s));

    runScan();
    EXPECT_EQ(begun, QStringList(u"a.JPG"_s));
}

TEST_F(LocalScanTest, StoppingGivesBackWhatRestsAndFinishesTheRest) {
    write(u"a.JPG"_s);
    duration = std::chrono::seconds(30);
    look();
    rest(1);
    write(u"b.JPG"_s);
    look();

    scan.stop();
    EXPECT_TRUE(tracker.isProcessing(u"a.JPG"_s));
    EXPECT_FALSE(tracker.isProcessing(u"b.JPG"_s));
    look(); // a scan right after must find what was given back
    EXPECT_TRUE(tracker.isProcessing(u"b.JPG"_s));
    finishAll();

    EXPECT_EQ(begun, QStringList({u"a.JPG"_s, u"b.JPG"_s}));
    EXPECT_EQ(ended, begun);
}

TEST_F(LocalScanTest, StoppingReachesImagesThatHaveRestedBehindAHangingShare) {
    write(u"a.JPG"_s);
    look();
    HangingThreads share(threads.of(ingest));
    clock.advance(std::chrono::seconds(2));
    waitUntil([this] { return clock.waiting() == 0; }); // the image is being checked again
    scan.stop();
    EXPECT_FALSE(tracker.isProcessing(u"a.JPG"_s));
    share.recover();
    finishAll();
    EXPECT_TRUE(begun.isEmpty());
}

TEST_F(LocalScanTest, WhatRestedUntilTheStopWaitsForNoHangingShare) {
    write(u"a.JPG"_s);
    look();
    const HangingThreads share(threads.of(ingest));
    scan.stop();
    finishAll();
    EXPECT_TRUE(begun.isEmpty());
}

TEST_F(LocalScanTest, StoppingEndsALookBeforeItQueues) {
    write(u"a.JPG"_s);
    console.onLine = [this](const QString& line) {
        if (line.contains(u"Found 1 image"_s)) {
            scan.stop();
        }
    };
    runScan();
    EXPECT_TRUE(isPrinted(u"Scan stopped: ingest"_s));
    EXPECT_TRUE(begun.isEmpty());
    EXPECT_FALSE(tracker.isProcessing(u"a.JPG"_s));
}

TEST_F(LocalScanTest, AShareThatHangsHoldsNoOtherFolder) {
    write(u"a.JPG"_s);
    HangingThreads share(threads.of(ingest));
    for (int tick = 0; tick < 100; ++tick) {
        scan.startScan(ingest);
    }
    EXPECT_EQ(console.count(u"The last scan of ingest is still going on, no other is begun"_s), 99);

    await(scan.scanFolder(folder.path()));
    EXPECT_EQ(console.count(u"Scan complete"_s), 1);

    share.recover();
    finishAll();
    EXPECT_EQ(console.count(u"Scan complete"_s), 2);
    EXPECT_EQ(begun, QStringList(u"a.JPG"_s));
    runScan();
    EXPECT_EQ(console.count(u"Scan complete"_s), 3);
}

TEST_F(LocalScanTest, NamesThatCannotBeRightlyOpenedAreTold) {
    const QByteArray name = QFile::encodeName(ingest) + "/caf\xE9.JPG";
    ::fclose(::fopen(name.constData(), "w"));
    write(u"a.JPG"_s);
    runScan();
    ::unlink(name.constData());
    EXPECT_TRUE(isPrinted(u"  caf\uFFFD.JPG: The file name is not UTF-8, skipping"_s));
    EXPECT_EQ(begun, QStringList(u"a.JPG"_s));
}

} // namespace

} // namespace ostrelle
