// SPDX-License-Identifier: GPL-3.0-or-later
#include "pipeline/AnalyzerError.h"
#include "pipeline/PipelineFixture.h"

#include <sys/stat.h>
#include <utime.h>

#include <QFileInfo>
#include <QSemaphore>
#include <QSignalSpy>
#include <QThreadPool>
#include <QtConcurrentRun>

namespace ostrelle {

using namespace Qt::StringLiterals;
using Outcome = OutcomeKind;

TEST_F(PipelineTest, ARawImageGoesInAndItsCaptionStandsInTheSidecar) {
    const QString image = rawImage();
    sidecar("Stub");
    const utimbuf longAgo{0, 0};
    const QString sidecarFile = folder.filePath(u"IMG_1.xmp"_s);
    ASSERT_EQ(::utime(sidecarFile.toLocal8Bit().constData(), &longAgo), 0);
    model.enqueue(reply(u"\n Sam Abel scores. \nAnd more."_s));

    EXPECT_TRUE(run(image));

    EXPECT_EQ(caption(), u"Sam Abel scores."_s);
    EXPECT_TRUE(read(u"IMG_1.xmp"_s).contains("<photoshop:Headline>Herons vs. Foxes</photoshop:Headline>"));
    EXPECT_GT(QFileInfo(sidecarFile).lastModified().toSecsSinceEpoch(), 1'000'000'000);
    const QJsonArray content = model.lastJson()[u"messages"_s][1][u"content"_s].toArray();
    const QString prompt = content[0][u"text"_s].toString();
    EXPECT_TRUE(prompt.startsWith(
        u"Context:\n- Event: Herons vs. Foxes\n- Rights: (A. Photographer)\n- Sport: Football\n"_s));
    EXPECT_TRUE(prompt.contains(u"\nCode Replacements:\n12\tSam Abel\n"_s));
    EXPECT_TRUE(prompt.endsWith(u"\n\nExisting caption (may be minimal): Stub"_s));
    const QByteArray copy = read(u"data/OpenAI_Previews/IMG_1_preview.jpg"_s);
    EXPECT_EQ(content[1][u"image_url"_s][u"url"_s].toString(),
              u"data:image/jpeg;base64,"_s + QString::fromLatin1(copy.toBase64()));
    EXPECT_EQ(status.processed(), 1);
    EXPECT_EQ(status.lastMessage(), u"Auto: Processed IMG_1.DNG"_s);
    EXPECT_EQ(status.lifetimeImagesProcessed(), 1);
    EXPECT_FALSE(status.isProcessing());
    EXPECT_EQ(status.totalFiles(), 0);
    EXPECT_DOUBLE_EQ(usage.totalCostAllTime(), 0.45);
    ASSERT_EQ(reports.size(), 1);
    EXPECT_EQ(reports[0].kind, Outcome::captioned);
    EXPECT_EQ(reports[0].captionBefore, u"Stub"_s);
    EXPECT_EQ(reports[0].captionAfter, u"Sam Abel scores."_s);
    EXPECT_DOUBLE_EQ(reports[0].cost.value_or(0), 0.45);
    EXPECT_EQ(access.begun, access.ended);
}

TEST_F(PipelineTest, TheLogTellsTheRunInItsOrder) {
    const QString image = rawImage();
    sidecar("Stub");
    model.enqueue(reply(u"Sam Abel scores."_s));
    run(image);
    const QStringList order = {
        u"[Analyzer] Auto mode: processing IMG_1.DNG"_s,
        u"[Analyzer] XMP dump for IMG_1.DNG — size: "_s,
        u"[Analyzer] Using manually selected code replacements file: "_s,
        u"[Analyzer] ✓ Event found in context: 'Herons vs. Foxes'"_s,
        u"[Analyzer] Context present: YES — Event: Herons vs. Foxes"_s,
        u"[Analyzer] Code Replacements present: YES — 1 lines, 12 characters, 1 unique keys"_s,
        u"[Analyzer] Code Replacements sample keys: 12"_s,
        u"[Analyzer] Code Replacements preview (first 500 chars):"_s,
        u"[Analyzer] XMP creator present: YES — A. Photographer"_s,
        u"[Analyzer] XMP rights present: YES"_s,
        u"[Analyzer] XMP rights FULL VALUE: \"(A. Photographer)\""_s,
        u"[Analyzer] XMP rights will appear in Context as: Rights: (A. Photographer)"_s,
        u"[Analyzer] FULL PROMPT LENGTH: "_s,
        u"[Analyzer] Prompt head (first "_s,
        u"[Analyzer] Prompt tail (last 500 chars):"_s,
        u"[Analyzer] About to write caption (16 bytes) for IMG_1.DNG: \"Sam Abel scores.\""_s,
        u"[Analyzer] Security-scoped access: file=true, folder=true"_s,
        u"[Analyzer] XMP before write (x-default): Stub"_s,
        u"[Analyzer] XMP after write (x-default): Sam Abel scores."_s,
        u"[Analyzer] Wrote caption to XMP and touched mtime for IMG_1.DNG."_s,
    };
    QStringList lines = logFile().filter(u"Z [Analyzer] "_s);
    ASSERT_EQ(lines.size(), order.size()) << lines.join(u'\n').toStdString();
    for (qsizetype index = 0; index < order.size(); ++index) {
        EXPECT_TRUE(lines[index].startsWith(u"2024-10-26T12:00:00Z "_s + order[index]))
            << lines[index].toStdString();
    }
}

TEST_F(PipelineTest, AnImageWithoutASidecarGetsOneEvenWhenTheRunThenFails) {
    const QString image = rawImage();
    StandInAnswer refusal;
    refusal.status = 500;
    refusal.body = "{}";
    model.enqueue(refusal);
    EXPECT_FALSE(run(image));
    EXPECT_EQ(read(u"IMG_1.xmp"_s).size(), 498);
    EXPECT_TRUE(hasLogged(u"[Analyzer] OpenAI generateCaption failed for IMG_1.DNG: OpenAI HTTP 500: {}"_s));
    EXPECT_TRUE(hasLogged(u"[Analyzer] Auto mode failed IMG_1.DNG: OpenAI HTTP 500: {}"_s));
    EXPECT_EQ(status.failed(), 1);
    EXPECT_EQ(status.totalFailedAllTime(), 1);
    EXPECT_EQ(status.lastMessage(), u"Auto: Failed IMG_1.DNG"_s);

    EXPECT_TRUE(run(image));
    EXPECT_TRUE(model.lastJson()[u"messages"_s][1][u"content"_s][0][u"text"_s].toString().endsWith(
        u"Existing caption (may be minimal): "_s));
    EXPECT_TRUE(caption().value_or(QString()).contains(u"stand-in"_s));
}

TEST_F(PipelineTest, GatesDecideBeforeAnythingIsAsked) {
    settings.setAlwaysOverwriteCaptions(false);
    const QByteArray fifty(50, 'x');
    const struct {
        const char* what;
        QByteArray caption;
        bool isDone;
        qsizetype requests;
    } rows[] = {
        {"a stub of 50 characters", fifty, true, 1},
        {"51 characters", fifty + "y", true, 0},
        {"blanks do not count", "   \n " + fifty + " \n", true, 1},
        {"an emoji is one character", fifty.chopped(1) + "\xF0\x9F\x91\x8D\xF0\x9F\x8F\xBD", true, 1},
        {"no caption", "", true, 1},
    };
    for (const auto& row : rows) {
        SCOPED_TRACE(row.what);
        const qsizetype before = model.requests().size();
        const QString image = rawImage();
        sidecar(row.caption);
        EXPECT_EQ(run(image), row.isDone);
        EXPECT_EQ(model.requests().size() - before, row.requests);
    }
    EXPECT_TRUE(hasLogged(u"IMG_1.DNG already has caption, skipping (overwrite disabled)"_s));

    EXPECT_FALSE(run(write(u"notes.txt"_s, "x")));
    settings.setCodeReplacementsFile(std::nullopt);
    EXPECT_FALSE(run(rawImage()));
    EXPECT_TRUE(hasLogged(u"[Analyzer] Auto mode: Skipping IMG_1.DNG - no code replacement file set"_s));
    EXPECT_EQ(reports.last().kind, Outcome::refused);
}

TEST_F(PipelineTest, AReplyIsWrittenUnlessItIsTheOldCaption) {
    const struct {
        QByteArray before;
        QString reply;
        QString after;
        Outcome outcome;
        QString line;
    } rows[] = {
        {"Same", u" Same \n"_s, u"Same"_s, Outcome::unchanged, u"Model returned default caption unchanged"_s},
        {" Same ", u"Same"_s, u" Same "_s, Outcome::unchanged, u"Model returned default caption unchanged"_s},
        {"Zo\xC3\xAB", u"Zoe\u0308"_s, u"Zoë"_s, Outcome::unchanged,
         u"Model returned default caption unchanged"_s},
        {"Shot in city, state", u"Shot in city, state"_s, u"Shot in city, state"_s, Outcome::captioned,
         u"Model returned caption with placeholders unchanged"_s},
        {"Stub", u"New in City,State"_s, u"New in City,State"_s, Outcome::captioned,
         u"Wrote caption to XMP"_s},
    };
    for (const auto& row : rows) {
        SCOPED_TRACE(row.before.toStdString());
        const QString image = rawImage();
        sidecar(row.before);
        QFile::remove(log.path());
        model.enqueue(reply(row.reply));
        EXPECT_TRUE(run(image));
        EXPECT_EQ(caption(), row.after);
        EXPECT_EQ(reports.last().kind, row.outcome);
        EXPECT_TRUE(hasLogged(row.line));
    }
    EXPECT_EQ(status.processed(), 5);
    EXPECT_EQ(status.lifetimeImagesProcessed(), 2) << "only what was written counts as captioned";
}

TEST_F(PipelineTest, NoCaptionStaysNoCaption) {
    const QString image = rawImage();
    write(u"IMG_1.xmp"_s, "<rdf:RDF xmlns:rdf='http://www.w3.org/1999/02/22-rdf-syntax-ns#'/>");
    const QByteArray before = read(u"IMG_1.xmp"_s);
    model.enqueue(reply(u"No caption"_s));
    EXPECT_TRUE(run(image));
    EXPECT_EQ(read(u"IMG_1.xmp"_s), before);
}

TEST_F(PipelineTest, WithoutAKeyTheUserIsAskedForOne) {
    defaults.remove(apiKeyName);
    settings.setAutoMode(true);
    QSignalSpy opened(&events, &AppEvents::showSettingsWindow);
    const QString image = rawImage();
    for (const int button : {0, 1}) {
        alerts.answer = button;
        EXPECT_FALSE(run(image));
        EXPECT_EQ(opened.size(), 1) << "the first button only opens the settings";
    }
    EXPECT_FALSE(settings.autoMode());
    EXPECT_EQ(alerts.shown.value(0).title, u"OpenAI API Key Required"_s);
    EXPECT_EQ(alerts.shown.value(0).buttons, (QStringList{u"Open Settings"_s, u"Cancel"_s}));
    EXPECT_EQ(status.lastMessage(), u"Please add your API key in Settings."_s);
    EXPECT_EQ(status.failed(), 0);
    EXPECT_FALSE(status.isProcessing());
    try {
        await(analyzer.analyzeImage(image));
        ADD_FAILURE();
    } catch (const AnalyzerError& error) {
        EXPECT_EQ(error.code(), AnalyzerError::missingKey);
    }
}

TEST_F(PipelineTest, ProgressStaysWithTheOwnerOfAQueueUnlessAnImageFails) {
    const QString image = rawImage();
    progress.expectImage(2, 3);
    EXPECT_TRUE(run(image));
    EXPECT_TRUE(status.isProcessing());
    EXPECT_EQ(status.totalFiles(), 3);
    EXPECT_EQ(status.currentFileIndex(), 2);
    QFile::remove(folder.filePath(u"IMG_1.xmp"_s));
    EXPECT_FALSE(run(write(u"IMG_1.DNG"_s, "no picture")));
    EXPECT_FALSE(status.isProcessing());
    EXPECT_EQ(status.totalFiles(), 0);
    EXPECT_TRUE(hasLogged(u"[Analyzer] Failed to extract preview for IMG_1.DNG: "_s));
}

TEST_F(PipelineTest, ABrokenSidecarIsLeftAlone) {
    const QString image = rawImage();
    write(u"IMG_1.xmp"_s, "<broken");
    EXPECT_FALSE(run(image));
    EXPECT_EQ(read(u"IMG_1.xmp"_s), "<broken");
    EXPECT_TRUE(hasLogged(u"[Analyzer] Could not read metadata for IMG_1.DNG: The XML is not well formed"_s));
    EXPECT_TRUE(model.requests().isEmpty());
}

TEST_F(PipelineTest, ASidecarThatNobodyMayReadIsMadeAnew) {
    const QString image = rawImage();
    sidecar("Nobody knows");
    ASSERT_EQ(::chmod(folder.filePath(u"IMG_1.xmp"_s).toLocal8Bit().constData(), 0), 0);
    model.enqueue(reply(u"Sam Abel scores."_s));
    EXPECT_TRUE(run(image));
    EXPECT_EQ(caption(), u"Sam Abel scores."_s);
    EXPECT_TRUE(QFile::exists(folder.filePath(u"IMG_1.xmp.unreadable"_s)));
    EXPECT_TRUE(console.lines.contains(u"[Analyzer] Recreated unreadable XMP sidecar for IMG_1.DNG"_s));
    EXPECT_FALSE(reports.last().captionBefore);
}

TEST_F(PipelineTest, AReadOnlyFolderIsAFailureThatLosesNothing) {
    const QString image = rawImage();
    sidecar("Stub");
    const QByteArray before = read(u"IMG_1.xmp"_s);
    ASSERT_TRUE(QDir(folder.path()).mkdir(u"data"_s));
    ASSERT_EQ(::chmod(folder.path().toLocal8Bit().constData(), 0555), 0);
    EXPECT_FALSE(run(image));
    EXPECT_EQ(read(u"IMG_1.xmp"_s), before);
    EXPECT_TRUE(hasLogged(u"[Analyzer] The model is not asked about IMG_1.DNG, as no caption can be written: "
                          "Could not write "_s));
    EXPECT_TRUE(model.requests().isEmpty());
    ASSERT_TRUE(QFile::remove(folder.filePath(u"data/Analyzer.log"_s)));
    ASSERT_EQ(::chmod(folder.path().toLocal8Bit().constData(), 0755), 0);
    EXPECT_EQ(access.begun, access.ended);
}

TEST_F(PipelineTest, ASidecarThatComesWhileOursIsWaitingToBeMadeIsKept) {
    const QString image = rawImage();
    QSemaphore isBusy;
    const auto occupyWorker = [&isBusy] { isBusy.acquire(); };
    const int workers = QThreadPool::globalInstance()->maxThreadCount();
    QList<QFuture<void>> busy;
    for (int worker = 0; worker < workers; ++worker) {
        busy.append(QtConcurrent::run(occupyWorker));
    }
    auto task = analyzer.analyzeImage(image);
    sidecar("The preset's stub"); // as the ingest tool writes it, just now
    isBusy.release(workers);
    EXPECT_EQ(await(std::move(task)).captionBefore, u"The preset's stub"_s);
    EXPECT_TRUE(read(u"IMG_1.xmp"_s).contains("Herons vs. Foxes"));
}

TEST_F(PipelineTest, AJpegIsCaptionedInsideAndItsSidecarIsLeftAlone) {
    sidecar("In the sidecar");
    const QByteArray beside = read(u"IMG_1.xmp"_s);
    QByteArray packet = beside;
    packet.replace("In the sidecar", "In the picture");
    const QString image =
        write(u"IMG_1.JPG"_s, jpegWithXmp(jpegFile(SportsScene(300, 200, 1).image()), packet));
    model.enqueue(reply(u"Sam Abel scores."_s));
    EXPECT_TRUE(run(image));
    RecordingLog lines;
    EXPECT_EQ(captionOf(image), u"Sam Abel scores."_s);
    EXPECT_EQ(read(u"IMG_1.xmp"_s), beside);
    EXPECT_EQ(reports.last().captionBefore, u"In the picture"_s);
    EXPECT_TRUE(hasLogged(u"[Analyzer] XMP dump for IMG_1.JPG"_s));
    EXPECT_TRUE(hasLogged(u"[Analyzer] JPEG metadata before write: In the picture"_s));
    EXPECT_TRUE(
        hasLogged(u"[Analyzer] Successfully wrote caption to JPEG embedded metadata for IMG_1.JPG."_s));
}

TEST_F(PipelineTest, ThePromptOfAnImageIsToldWithoutTouchingAnything) {
    const QString image = rawImage();
    const QString prompt = await(analyzer.promptFor(image));
    EXPECT_TRUE(prompt.endsWith(u"Existing caption (may be minimal): No caption"_s));
    EXPECT_FALSE(QFile::exists(folder.filePath(u"IMG_1.xmp"_s)));
    EXPECT_TRUE(model.requests().isEmpty());
}

TEST_F(PipelineTest, AReplyWithoutUsageCostsNothing) {
    const QString image = rawImage();
    access.isGranting = false;
    model.enqueue(reply(u"Sam Abel scores."_s, false));
    EXPECT_TRUE(run(image));
    EXPECT_EQ(usage.todaysTokens(), 0);
    EXPECT_TRUE(hasLogged(u"[Analyzer] WARNING: No security-scoped access granted for write operation"_s));
    EXPECT_FALSE(reports.last().cost);
}

} // namespace ostrelle
