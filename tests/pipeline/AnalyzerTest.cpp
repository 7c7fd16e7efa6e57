// SPDX-License-Identifier: GPL-3.0-or-later
#include "pipeline/AnalyzerError.h"
#include "pipeline/PipelineFixture.h"
#include "support/Failure.h"
#include "support/HangingThreads.h"

#include <QSet>
#include <QSignalSpy>
#include <algorithm>
#include <vector>

namespace ostrelle {

using namespace Qt::StringLiterals;
using Outcome = OutcomeKind;

TEST_F(PipelineTest, ARawImageGoesInAndItsCaptionStandsInTheSidecar) {
    const QString image = rawImage();
    sidecar("Stub");
    model.enqueue(reply(u"\n Sam Abel scores. \nAnd more."_s));

    EXPECT_TRUE(run(image));

    EXPECT_EQ(caption(), u"Sam Abel scores."_s);
    EXPECT_TRUE(read(u"IMG_1.xmp"_s).contains("<photoshop:Headline>Herons vs. Foxes</photoshop:Headline>"));
    const QJsonArray content = model.lastJson()[u"messages"_s][1][u"content"_s].toArray();
    const QString prompt = texts().value(0);
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
    EXPECT_TRUE(access.held.isEmpty() && !access.all.isEmpty());

    expectLogged({u"Auto mode: processing IMG_1.DNG"_s,
                  u"XMP dump for IMG_1.DNG — size: "_s,
                  u"Using manually selected code replacements file: "_s,
                  u"✓ Event found in context: 'Herons vs. Foxes'"_s,
                  u"Context present: YES — Event: Herons vs. Foxes"_s,
                  u"Code Replacements present: YES — 1 lines, 12 characters, 1 unique keys"_s,
                  u"Code Replacements sample keys: 12"_s,
                  u"Code Replacements preview (first 500 chars):"_s,
                  u"XMP creator present: YES — A. Photographer"_s,
                  u"XMP rights present: YES"_s,
                  u"XMP rights FULL VALUE: \"(A. Photographer)\""_s,
                  u"XMP rights will appear in Context as: Rights: (A. Photographer)"_s,
                  u"FULL PROMPT LENGTH: "_s,
                  u"Prompt head (first "_s,
                  u"Prompt tail (last 500 chars):"_s,
                  u"About to write caption (16 bytes) for IMG_1.DNG: \"Sam Abel scores.\""_s,
                  u"Security-scoped access: file=true, folder=true"_s,
                  u"XMP before write (x-default): Stub"_s,
                  u"XMP after write (x-default): Sam Abel scores."_s,
                  u"Wrote caption to XMP and touched mtime for IMG_1.DNG."_s});
}

TEST_F(PipelineTest, AnImageWithoutASidecarGetsOneEvenWhenTheRunThenFails) {
    const QString image = rawImage();
    model.enqueue(refusal());
    EXPECT_FALSE(run(image));
    EXPECT_EQ(read(u"IMG_1.xmp"_s).size(), 498);
    EXPECT_TRUE(hasLogged(u"[Analyzer] OpenAI generateCaption failed for IMG_1.DNG: OpenAI HTTP 500: {}"_s));
    EXPECT_TRUE(hasLogged(u"[Analyzer] Auto mode failed IMG_1.DNG: OpenAI HTTP 500: {}"_s));
    EXPECT_EQ(status.failed(), 1);
    EXPECT_EQ(status.totalFailedAllTime(), 1);
    EXPECT_EQ(status.lastMessage(), u"Auto: Failed IMG_1.DNG"_s);

    EXPECT_TRUE(run(image));
    EXPECT_TRUE(texts().value(0).endsWith(u"Existing caption (may be minimal): "_s));
    EXPECT_TRUE(caption().value_or(QString()).contains(u"stand-in"_s));
}

TEST_F(PipelineTest, GatesDecideBeforeAnythingIsAsked) {
    settings.setAlwaysOverwriteCaptions(false);
    const QString image = rawImage();
    sidecar(QByteArray(51, 'x'));
    EXPECT_TRUE(run(image));
    EXPECT_TRUE(hasLogged(u"IMG_1.DNG already has caption, skipping (overwrite disabled)"_s));
    EXPECT_FALSE(run(write(u"notes.txt"_s, "x")));
    EXPECT_TRUE(model.requests().isEmpty());
    sidecar(QByteArray(50, 'x'));
    EXPECT_TRUE(run(image));
    EXPECT_EQ(model.requests().size(), 1);

    settings.setCodeReplacementsFile(std::nullopt);
    EXPECT_FALSE(run(image));
    EXPECT_TRUE(hasLogged(u"[Analyzer] Auto mode: Skipping IMG_1.DNG - no code replacement file set"_s));
    EXPECT_EQ(reports.last().kind, Outcome::refused);
}

TEST_F(PipelineTest, NoCaptionStaysNoCaption) {
    const QString image = rawImage();
    write(u"IMG_1.xmp"_s, "<rdf:RDF xmlns:rdf='http://www.w3.org/1999/02/22-rdf-syntax-ns#'/>");
    const QByteArray before = read(u"IMG_1.xmp"_s);
    model.enqueue(reply(u"No caption"_s));
    EXPECT_TRUE(run(image));
    EXPECT_EQ(read(u"IMG_1.xmp"_s), before);
    EXPECT_EQ(reports.last().kind, Outcome::unchanged);
    EXPECT_EQ(status.processed(), 1);
    EXPECT_EQ(status.lifetimeImagesProcessed(), 0) << "only what was written counts as captioned";
}

TEST_F(PipelineTest, WithoutAKeyTheUserIsAskedForOneHoweverManyImagesMissIt) {
    defaults.remove(apiKeyName);
    settings.setAutoMode(true);
    QSignalSpy opened(&events, &AppEvents::showSettingsWindow);
    const QString image = rawImage();
    EXPECT_FALSE(run(image));
    EXPECT_EQ(opened.size(), 1);
    EXPECT_FALSE(settings.autoMode());
    EXPECT_EQ(status.lastMessage(), u"Please add your API key in Settings."_s);
    EXPECT_EQ(status.failed(), 0);
    EXPECT_FALSE(status.isProcessing());

    alerts.answer = 1;
    alerts.isOpen = true;
    std::vector<QCoro::Task<bool>> tasks;
    for (int index = 0; index < 20; ++index) {
        tasks.push_back(analyzer.analyzeSingle(jpegImage(u"IMG_%1.JPG"_s.arg(index))));
    }
    waitUntil([this] { return reports.size() == 21; });
    alerts.close();
    for (QCoro::Task<bool>& task : tasks) {
        EXPECT_FALSE(await(std::move(task)));
    }
    EXPECT_EQ(alerts.titles(), (QStringList{u"OpenAI API Key Required"_s, u"OpenAI API Key Required"_s}));
    EXPECT_EQ(alerts.shown[0].buttons, (QStringList{u"Open Settings"_s, u"Cancel"_s}));
    EXPECT_EQ(opened.size(), 1) << "only the first button opens the settings";
    EXPECT_EQ(failureOf<AnalyzerError>(analyzer.analyzeImage(image)).code(), AnalyzerError::missingKey);
}

TEST_F(PipelineTest, ProgressStaysWithTheOwnerOfAQueueUnlessAnImageFails) {
    const QString image = rawImage();
    progress.expectImage(2, 3);
    EXPECT_TRUE(run(image));
    EXPECT_TRUE(status.isProcessing());
    EXPECT_EQ(status.totalFiles(), 3);
    EXPECT_EQ(status.currentFileIndex(), 2);
    QFile::remove(path(u"IMG_1.xmp"_s));
    EXPECT_FALSE(run(write(u"IMG_1.DNG"_s, "no picture")));
    EXPECT_FALSE(status.isProcessing());
    EXPECT_EQ(status.totalFiles(), 0);
    EXPECT_TRUE(hasLogged(u"[Analyzer] Failed to extract preview for IMG_1.DNG: "_s));
}

TEST_F(PipelineTest, ThreeHundredImagesAtOnceAreEachCaptionedOnce) {
    constexpr int count = 300;
    std::vector<QCoro::Task<bool>> tasks;
    qsizetype begun = 0;
    qsizetype mostAtOnce = 0;
    QObject::connect(&status, &StatusStore::currentFileNameChanged, &status,
                     [&] { mostAtOnce = std::max(mostAtOnce, ++begun - reports.size()); });
    for (int index = 0; index < count; ++index) {
        const QString name = u"IMG_%1"_s.arg(index);
        tasks.push_back(analyzer.analyzeSingle(index % 2 == 0 ? rawImage(name + u".DNG"_s)
                                                              : jpegImage(name + u".JPG"_s)));
    }
    waitUntil([this] { return reports.size() == count; });
    EXPECT_EQ(status.processed(), count);
    EXPECT_TRUE(status.isProcessing()) << "the last image's progress stays visible for a while";
    clock.advance(std::chrono::seconds(2));
    QSet<QString> captioned;
    for (QCoro::Task<bool>& task : tasks) {
        EXPECT_TRUE(await(std::move(task)));
    }
    for (const ImageOutcome& report : std::as_const(reports)) {
        EXPECT_EQ(report.kind, Outcome::captioned) << report.reason.toStdString();
        captioned.insert(report.file);
    }
    EXPECT_EQ(captioned.size(), count);
    EXPECT_EQ(model.requests().size(), count);
    EXPECT_EQ(mostAtOnce, CaptionTurns::imagesAtOnce);
    EXPECT_FALSE(status.isProcessing());
    EXPECT_EQ(status.totalFiles(), 0);
}

TEST_F(PipelineTest, AProgressThatIsAnotherImagesIsLeftToIt) {
    auto broken = analyzer.analyzeSingle(write(u"IMG_1.JPG"_s, "no picture"));
    EXPECT_FALSE(await(std::move(broken)));
    model.enqueue(held(u"Sam Abel scores."_s));
    auto good = analyzer.analyzeSingle(jpegImage(u"IMG_2.JPG"_s));
    waitUntil([this] { return model.isHolding(); });
    clock.advance(std::chrono::seconds(2));
    EXPECT_TRUE(status.isProcessing());
    EXPECT_EQ(status.currentFileName(), u"IMG_2.JPG"_s);
    model.releaseHeld();
    EXPECT_TRUE(await(std::move(good)));
    EXPECT_TRUE(status.isProcessing()) << "its progress stays visible for a while";
    clock.advance(std::chrono::seconds(2));
    EXPECT_FALSE(status.isProcessing());
}

TEST_F(PipelineTest, ASidecarThatNobodyMayReadIsMadeAnew) {
    const QString image = rawImage();
    sidecar("Nobody knows");
    setMode(path(u"IMG_1.xmp"_s), 0);
    model.enqueue(reply(u"Sam Abel scores."_s));
    EXPECT_TRUE(run(image));
    EXPECT_EQ(caption(), u"Sam Abel scores."_s);
    EXPECT_TRUE(QFile::exists(path(u"IMG_1.xmp.unreadable"_s)));
    EXPECT_TRUE(console.lines.contains(u"[Analyzer] Recreated unreadable XMP sidecar for IMG_1.DNG"_s));
    EXPECT_FALSE(reports.last().captionBefore);
}

TEST_F(PipelineTest, AReadOnlyFolderIsAFailureThatLosesNothing) {
    const QString image = rawImage();
    sidecar("Stub");
    const QByteArray before = read(u"IMG_1.xmp"_s);
    folderWith(u"data"_s);
    setMode(folder.path(), 0555);
    EXPECT_FALSE(run(image));
    EXPECT_EQ(read(u"IMG_1.xmp"_s), before);
    EXPECT_TRUE(hasLogged(u"[Analyzer] The model is not asked about IMG_1.DNG, as no caption can be written: "
                          "Could not write "_s));
    EXPECT_TRUE(model.requests().isEmpty());
    setMode(folder.path(), 0755);
    EXPECT_TRUE(access.held.isEmpty());
}

TEST_F(PipelineTest, ASidecarThatComesWhileOursIsWaitingToBeMadeIsKept) {
    const QString image = rawImage();
    HangingThreads share(threads.of(folder.path()));
    auto task = analyzer.analyzeImage(image);
    sidecar("The preset's stub"); // just written by the ingest tool
    share.recover();
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
    EXPECT_FALSE(QFile::exists(path(u"IMG_1.xmp"_s)));
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
