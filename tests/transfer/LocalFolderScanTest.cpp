// SPDX-License-Identifier: GPL-3.0-or-later
#include "standins/JpegBuilder.h"
#include "standins/SportsScene.h"
#include "transfer/LocalScanFixture.h"

#include <sys/stat.h>
#include <unistd.h>

namespace ostrelle {

using namespace Qt::StringLiterals;

namespace {

using Verdict = CaptionJudgement::Verdict;

TEST(CaptionJudgementTest, CountsWhatAPersonSees) {
    struct Case {
        std::optional<QString> caption;
        Verdict verdict;
        qsizetype characters;
    };
    const QString family = u"👨‍👩‍👧‍👦"_s;
    const Case cases[] = {
        {std::nullopt, Verdict::missing, 0},
        {u""_s, Verdict::missing, 0},
        {u" \t\r\n\u00A0"_s, Verdict::missing, 0},
        {u"x"_s, Verdict::tooShort, 1},
        {QString(50, u'x'), Verdict::tooShort, 50},
        {u"  "_s + QString(50, u'x') + u"\n"_s, Verdict::tooShort, 50},
        {QString(51, u'x'), Verdict::present, 51},
        {family.repeated(50), Verdict::tooShort, 50},
        {family.repeated(51), Verdict::present, 51},
        {u"e\u0301"_s.repeated(50), Verdict::tooShort, 50},
    };
    for (const Case& test : cases) {
        const CaptionJudgement judgement = CaptionJudgement::of(test.caption);
        EXPECT_EQ(judgement.verdict, test.verdict) << test.caption.value_or(u"none"_s).toStdString();
        EXPECT_EQ(judgement.characters, test.characters);
    }
}

TEST_F(LocalScanTest, TakesANewRawImageAllTheWay) {
    write(u"IMG_1.CR2"_s);
    look();
    EXPECT_TRUE(tracker.isProcessing(u"IMG_1.CR2"_s));
    finishAll();

    log.lines = log.lines.filter(u"[AppDelegate]"_s);
    EXPECT_EQ(log.lines,
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
    EXPECT_TRUE(access.held.isEmpty());
    EXPECT_EQ(access.all, QStringList({ingest, ingest})) << "the scan's and the task's";
}

TEST_F(LocalScanTest, AFolderWithoutImagesHasNoBatch) {
    write(u"notes.txt"_s);
    runScan();
    EXPECT_EQ(log.lines.filter(u"[AppDelegate]"_s),
              QStringList(
                  {u"[AppDelegate] Scanning directory: ingest"_s,
                   u"[AppDelegate] Found 0 image files total (0 RAW, 0 JPEG)"_s,
                   u"[AppDelegate] Scan complete: 0 to process, 0 processing, 0 previously processed, 0 have "
                   "captions, 0 no XMP"_s}));
}

TEST_F(LocalScanTest, DecidesByTheCaption) {
    const QByteArray picture = jpegFile(SportsScene(64, 48, 1).image());
    struct Case {
        QString image;
        QByteArray bytes;
        std::optional<QByteArray> sidecar;
        QString words;
        bool isQueued;
    };
    const QString cleared = u": No caption or caption was cleared, needs processing"_s;
    const Case cases[] = {
        {u"a.CR2"_s, "raw", sidecar(QString(50, u'x')), u": Caption too short (50 chars), needs processing"_s,
         true},
        {u"b.CR2"_s, "raw", sidecar(QString(51, u'x')), u": Already has caption (51 chars)"_s, false},
        {u"c.CR2"_s, "raw", sidecar(u" \n "_s), cleared, true},
        {u"d.CR2"_s, "raw", QByteArray("no XML"), cleared, true},
        {u"e.CR2"_s, "raw", QByteArray(), cleared, true},
        {u"f.JPG"_s, "no JPEG", sidecar(QString(60, u'x')), cleared, true},
        {u"g.Jpeg"_s, jpegWithXmp(picture, sidecar(QString(51, u'x'))), std::nullopt,
         u": Already has caption (51 chars)"_s, false},
        {u"h.jpg"_s, jpegWithXmp(picture, sidecar(u"Stub"_s)), std::nullopt,
         u": Caption too short (4 chars), needs processing"_s, true},
        {u"i.jpg"_s, picture, std::nullopt, cleared, true},
    };
    QStringList queued;
    for (const Case& test : cases) {
        write(test.image, test.bytes);
        if (test.sidecar) {
            write(test.image.section(u'.', 0, 0) + u".xmp"_s, *test.sidecar);
        }
        queued += test.isQueued ? QStringList(test.image) : QStringList();
    }
    runScan();

    for (const Case& test : cases) {
        EXPECT_TRUE(log.has(u"[AppDelegate]   "_s + test.image + test.words)) << test.image.toStdString();
    }
    captioning.begun.sort();
    EXPECT_EQ(captioning.begun, queued);
    EXPECT_EQ(
        log.count(u"Scan complete: 7 to process, 0 processing, 0 previously processed, 2 have captions"_s),
        1);
    EXPECT_FALSE(QFile::exists(path(u"i.xmp"_s))) << "a JPEG has no sidecar";
}

TEST_F(LocalScanTest, ASidecarThatCannotBeMadeStopsNoOtherImage) {
    write(u"a.CR2"_s);
    write(u"b.JPG"_s);
    QFile::setPermissions(ingest, QFile::ReadOwner | QFile::ExeOwner);
    runScan();
    QFile::setPermissions(ingest, QFile::ReadOwner | QFile::WriteOwner | QFile::ExeOwner);

    EXPECT_EQ(log.count(u"[AppDelegate]   a.CR2: Failed to create XMP sidecar: Could not write "_s), 1);
    EXPECT_EQ(captioning.begun, QStringList(u"b.JPG"_s));
    EXPECT_EQ(
        log.count(
            u"Scan complete: 1 to process, 0 processing, 0 previously processed, 0 have captions, 1 no XMP"_s),
        1);
}

TEST_F(LocalScanTest, AFolderThatVanishesIsOneLine) {
    QDir(ingest).removeRecursively();
    runScan();
    EXPECT_EQ(
        log.lines.filter(u"[AppDelegate]"_s),
        QStringList(
            u"[AppDelegate] Error scanning directory: Could not read %1: No such file or directory."_s.arg(
                ingest)));
    EXPECT_TRUE(access.held.isEmpty());
    EXPECT_EQ(access.all, QStringList(ingest));
}

TEST_F(LocalScanTest, AnImageThatVanishesIsSkippedAndGetsNoSidecar) {
    write(u"a.CR2"_s);
    log.onLine = [this](const QString& line) {
        if (line.contains(u"Found 1 image"_s)) {
            QFile::remove(path(u"a.CR2"_s));
        }
    };
    runScan();
    EXPECT_TRUE(log.has(u"[AppDelegate]   a.CR2: No longer there, skipping"_s));
    EXPECT_TRUE(QDir(ingest).isEmpty());
    EXPECT_TRUE(captioning.begun.isEmpty());
}

TEST_F(LocalScanTest, AFailedImageRestsForAMinute) {
    write(u"a.JPG"_s);
    captioning.results.insert(u"a.JPG"_s, OutcomeKind::failed);
    runScan();
    EXPECT_TRUE(log.has(u"[AppDelegate]   → analyzeSingle returned false for a.JPG"_s));
    EXPECT_TRUE(log.has(u"[AppDelegate]   ✓ Completed a.JPG - FAILED"_s));
    EXPECT_TRUE(log.has(u"[AppDelegate] Auto-processing batch complete: 0 processed, 1 failed"_s));
    const QDateTime failure = clock.now().addMSecs(-tracker.timeSinceFailure(u"a.JPG"_s)->count());

    clock.setNow(failure.addMSecs(59'999));
    look();
    EXPECT_TRUE(log.has(u"[AppDelegate]   a.JPG: Recently failed, skipping"_s));
    EXPECT_EQ(
        log.count(
            u"Scan complete: 0 to process, 0 processing, 0 previously processed, 0 have captions, 0 no XMP"_s),
        1);

    clock.setNow(failure.addSecs(60));
    look();
    EXPECT_EQ(tracker.timeSinceFailure(u"a.JPG"_s), std::nullopt);
    finishAll();
    EXPECT_EQ(captioning.begun.size(), 2);
}

TEST_F(LocalScanTest, AnImageThatCannotBeEditedWaitsForAChange) {
    write(u"a.JPG"_s);
    captioning.results.insert(u"a.JPG"_s, OutcomeKind::unwritable);
    runScan();
    clock.advance(std::chrono::hours(1));
    runScan();
    EXPECT_EQ(captioning.begun.size(), 1);
    EXPECT_TRUE(
        log.has(u"[AppDelegate]   a.JPG: Cannot be edited, left alone until it or its folder changes"_s));
    ASSERT_EQ(::chmod(ingest.toLocal8Bit().constData(), 0711), 0);
    runScan();
    EXPECT_EQ(captioning.begun.size(), 2);
    clock.advance(std::chrono::hours(1));
    captioning.results.insert(u"a.JPG"_s, OutcomeKind::changed);
    write(u"a.JPG"_s, "another picture");
    runScan();
    EXPECT_EQ(captioning.begun.size(), 3);
    runScan();
    EXPECT_EQ(captioning.begun.size(), 4) << "what has changed meanwhile is no failure";
}

TEST_F(LocalScanTest, AClockSetBackDoesNotHoldAFailedImage) {
    write(u"a.JPG"_s);
    captioning.results.insert(u"a.JPG"_s, OutcomeKind::failed);
    runScan();
    clock.setNow(clock.now().addDays(-1));
    runScan();
    EXPECT_EQ(captioning.begun.size(), 2);
}

TEST_F(LocalScanTest, ACaptionedImageIsNotReadAgainUntilItIsReplaced) {
    write(u"a.CR2"_s);
    runScan();
    write(u"a.xmp"_s, sidecar(u""_s)); // deleted by hand, and stays so
    runScan();
    EXPECT_EQ(captioning.begun.size(), 1);
    EXPECT_EQ(log.count(u"Scan complete: 0 to process, 0 processing, 1 previously processed"_s), 1);

    write(u"a.CR2"_s, "another picture");
    runScan();
    EXPECT_EQ(captioning.begun.size(), 2);
}

TEST_F(LocalScanTest, CaptionsEachOfManyImagesOnceHoweverManyScansOverlap) {
    for (int number = 0; number < 300; ++number) {
        write(u"IMG_%1.%2"_s.arg(number).arg(number % 2 == 0 ? u"JPG"_s : u"NEF"_s));
    }
    captioning.duration = std::chrono::seconds(25);
    scan.startScan(ingest);
    scan.startScan(ingest);
    for (int second = 0; second < 40; ++second) {
        clock.advance(std::chrono::seconds(1));
        look();
    }
    finishAll();

    EXPECT_EQ(captioning.begun.size(), 300);
    EXPECT_EQ(QSet<QString>(captioning.begun.begin(), captioning.begun.end()).size(), 300);
    EXPECT_EQ(log.count(u"Auto-processing batch complete: 300 processed, 0 failed"_s), 1);
    EXPECT_TRUE(access.held.isEmpty());
}

TEST_F(LocalScanTest, ATickWithinALookIsNotMadeUpFor) {
    HangingFolder share(threads, ingest);
    scan.startScan(ingest);
    scan.startScan(ingest);
    share.recover();
    finishAll();
    EXPECT_TRUE(log.has(u"[AppDelegate] The last scan of ingest is still going on, no other is begun"_s));
    EXPECT_EQ(log.count(u"Scan complete"_s), 1);
    runScan();
    EXPECT_EQ(log.count(u"Scan complete"_s), 2);
}

// What was read of an image may be out of date when it is decided on.
TEST_F(LocalScanTest, AnImageThatWentThroughTheWorksMeanwhileIsLeftToTheNextScan) {
    write(u"a.JPG"_s);
    write(u"b.JPG"_s);
    tracker.finish(u"a.JPG"_s, false);
    std::unique_ptr<HangingFolder> share;
    log.onLine = [&](const QString& line) {
        if (!line.contains(u"a.JPG: Recently failed"_s)) {
            return;
        }
        share = std::make_unique<HangingFolder>(threads, ingest);
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
    EXPECT_TRUE(log.has(u"[AppDelegate]   b.JPG: Already processing"_s));
    EXPECT_EQ(log.count(u"0 to process, 1 processing"_s), 1);
    EXPECT_TRUE(captioning.begun.isEmpty());

    log.onLine = {};
    runScan();
    EXPECT_TRUE(captioning.begun.contains(u"b.JPG"_s));
}

TEST_F(LocalScanTest, AnImageThatIsStillBeingWrittenIsNotTried) {
    write(u"a.JPG"_s, "half");
    look();
    write(u"a.JPG"_s, "half and more");
    finishAll();
    EXPECT_TRUE(captioning.begun.isEmpty());
    EXPECT_TRUE(log.has(u"[AppDelegate]   a.JPG: Still being written, left for the next scan"_s));
    EXPECT_TRUE(log.has(u"[AppDelegate] Auto-processing batch complete: 0 processed, 0 failed"_s));

    runScan();
    EXPECT_EQ(captioning.begun, QStringList(u"a.JPG"_s));
}

TEST_F(LocalScanTest, AnImageThatGoesWhileItRestsIsNoFailure) {
    write(u"a.JPG"_s);
    look();
    QFile::remove(path(u"a.JPG"_s));
    finishAll();
    EXPECT_TRUE(captioning.begun.isEmpty());
    EXPECT_EQ(tracker.timeSinceFailure(u"a.JPG"_s), std::nullopt);
    EXPECT_FALSE(tracker.isProcessing(u"a.JPG"_s));
}

TEST_F(LocalScanTest, StoppingGivesBackWhatRestsAndFinishesTheRest) {
    write(u"a.JPG"_s);
    captioning.duration = std::chrono::seconds(30);
    look();
    rest(1);
    write(u"b.JPG"_s);
    look();

    scan.stop();
    EXPECT_TRUE(tracker.isProcessing(u"a.JPG"_s));
    EXPECT_FALSE(tracker.isProcessing(u"b.JPG"_s));
    look(); // started anew at once: it has to find what was given back
    EXPECT_TRUE(tracker.isProcessing(u"b.JPG"_s));
    finishAll();

    EXPECT_EQ(captioning.begun, QStringList({u"a.JPG"_s, u"b.JPG"_s}));
    EXPECT_EQ(captioning.ended, captioning.begun);
}

TEST_F(LocalScanTest, StoppingReachesImagesThatHaveRestedBehindAHangingShare) {
    write(u"a.JPG"_s);
    look();
    HangingFolder share(threads, ingest);
    clock.advance(std::chrono::seconds(2));
    waitUntil([this] { return clock.waiting() == 0; }); // it is looked at again
    scan.stop();
    EXPECT_FALSE(tracker.isProcessing(u"a.JPG"_s));
    share.recover();
    finishAll();
    EXPECT_TRUE(captioning.begun.isEmpty());
}

TEST_F(LocalScanTest, WhatRestedUntilTheStopWaitsForNoHangingShare) {
    write(u"a.JPG"_s);
    look();
    const HangingFolder share(threads, ingest);
    scan.stop();
    finishAll();
    EXPECT_TRUE(captioning.begun.isEmpty());
}

TEST_F(LocalScanTest, StoppingEndsALookBeforeItQueues) {
    write(u"a.JPG"_s);
    log.onLine = [this](const QString& line) {
        if (line.contains(u"Found 1 image"_s)) {
            scan.stop();
        }
    };
    runScan();
    EXPECT_TRUE(log.has(u"[AppDelegate] Scan stopped: ingest"_s));
    EXPECT_TRUE(captioning.begun.isEmpty());
    EXPECT_FALSE(tracker.isProcessing(u"a.JPG"_s));
}

TEST_F(LocalScanTest, AShareThatHangsHoldsNoOtherFolder) {
    write(u"a.JPG"_s);
    HangingFolder share(threads, ingest);
    for (int tick = 0; tick < 100; ++tick) {
        scan.startScan(ingest);
    }
    EXPECT_EQ(log.count(u"is still going on, no other is begun"_s), 99);

    await(scan.scanFolder(folder.path()));
    EXPECT_EQ(log.count(u"Scan complete"_s), 1);

    share.recover();
    finishAll();
    EXPECT_EQ(log.count(u"Scan complete"_s), 2);
    EXPECT_EQ(captioning.begun, QStringList(u"a.JPG"_s));
}

TEST_F(LocalScanTest, NamesThatCannotBeRightlyOpenedAreTold) {
    const QByteArray name = QFile::encodeName(ingest) + "/caf\xE9.JPG";
    ::fclose(::fopen(name.constData(), "w"));
    write(u"a.JPG"_s);
    runScan();
    ::unlink(name.constData());
    EXPECT_TRUE(log.has(u"[AppDelegate]   caf\uFFFD.JPG: The file name is not UTF-8, skipping"_s));
    EXPECT_EQ(captioning.begun, QStringList(u"a.JPG"_s));
}

} // namespace

} // namespace ostrelle
