// SPDX-License-Identifier: GPL-3.0-or-later
#include "pipeline/SelectionSource.h"

#include "pipeline/PipelineFixture.h"

#include <QSignalSpy>

namespace ostrelle {

using namespace Qt::StringLiterals;

namespace {

class SelectionSourceTest : public PipelineTest {
protected:
    QCoro::Task<RunTally> start(const QStringList& files) {
        HeldAccess held;
        held.push_back(std::make_unique<ScopedAccess>(access, folder.path()));
        return analyzer.captionSelection(files, std::move(held), workspace);
    }
    void caption(const QStringList& files) { drive(start(files)); }

    QStringList jpegs(int count) const {
        QStringList images;
        for (int number = 1; number <= count; ++number) {
            images.append(jpegImage(u"IMG_%1.JPG"_s.arg(number)));
        }
        return images;
    }
    void expectIdle() {
        EXPECT_FALSE(status.isProcessing() || status.isWaitingForAPI() || status.currentFileName());
        EXPECT_EQ(status.currentFileIndex(), 0);
        EXPECT_EQ(status.totalFiles(), 0);
        EXPECT_EQ(status.currentBatchSize(), 0);
        await(turns.idle());
        EXPECT_FALSE(access.all.isEmpty());
        EXPECT_EQ(access.held, QStringList());
    }

    QSignalSpy settingsShown{&events, &AppEvents::showSettingsWindow};
    QSignalSpy folderWanted{&events, &AppEvents::chooseWatchFolder};
};

} // namespace

TEST_F(SelectionSourceTest, ARunOverChosenImagesHasItsOwnWords) {
    caption(jpegs(2));
    EXPECT_EQ(messages.first(), u"Processing 2 selected images...");
    EXPECT_EQ(status.lastMessage(), u"Successfully captioned 2 images");
    EXPECT_EQ(notified(), QStringList{u"Successfully captioned 2 images."_s});
    EXPECT_TRUE(alerts.shown.isEmpty());
    EXPECT_TRUE(console.has(
        u"[MenuContentView] Manual selection completed: success=2, failed=0, permission errors=0"_s));
    expectIdle();
}

TEST_F(SelectionSourceTest, ASelectionThatIsNotCaptionedIsExplained) {
    const QString raw = rawImage();
    sidecar("Beside it, but not chosen");
    caption({raw, jpegImage(u"IMG_2.JPG"_s)});
    caption({path(u"IMG_1.xmp"_s), path(u"roster.txt"_s)});
    EXPECT_EQ(alerts.titles(),
              (QStringList{u"RAW files selected without XMP sidecars"_s, u"No Images Selected"_s}));
    EXPECT_TRUE(model.requests().isEmpty());
    EXPECT_FALSE(status.lastMessage());
    expectIdle();
}

TEST_F(SelectionSourceTest, WithoutASandboxARawBringsItsSidecarAlong) {
    access.isGranting = false;
    const QString raw = rawImage();
    model.enqueue(refusal(401));
    caption({raw});
    EXPECT_EQ(notified(),
              QStringList{u"Failed to caption 1 image. Files: IMG_1.DNG. OpenAI refused the API key "
                          "(HTTP 401). Enter a valid one."_s})
        << "the sidecar is not the trouble";
    sidecar("Beside it");
    caption({raw});
    EXPECT_EQ(status.lastMessage(), u"Successfully captioned 1 image");
    EXPECT_TRUE(alerts.shown.isEmpty());
}

TEST_F(SelectionSourceTest, AChosenSidecarThatIsMissingIsMadeFirst) {
    const QString raw = rawImage();
    const QString other = rawImage(u"IMG_2.DNG"_s);
    sidecar("Stub", u"IMG_2.xmp"_s);
    caption({raw, path(u"img_1.xmp"_s), other, path(u"IMG_2.xmp"_s)});
    EXPECT_TRUE(captionOf(raw).value_or(QString()).contains(u"IMG_1.DNG"_s));
    EXPECT_TRUE(captionOf(other).value_or(QString()).contains(u"IMG_2.DNG"_s));
    const QStringList lines = console.lines.filter(u"XMP"_s).filter(u"[MenuContentView]"_s);
    EXPECT_EQ(lines, (QStringList{u"[MenuContentView] Started security-scoped access for XMP: IMG_1.xmp"_s,
                                  u"[MenuContentView] Created XMP sidecar for IMG_1.DNG"_s,
                                  u"[MenuContentView] Created 1 XMP sidecar file(s) for RAW files"_s}));
    expectIdle();
}

TEST_F(SelectionSourceTest, AFolderThatCannotBeWrittenIsExplainedAfterTheSuccess) {
    const QString locked = folderWith(u"locked"_s);
    const QString raw = rawImage(u"locked/IMG_2.DNG"_s);
    const QString jpeg = jpegImage(u"locked/IMG_4290.JPG"_s);
    setMode(locked, 0555);
    caption({jpegImage(u"IMG_1.JPG"_s), raw, path(u"locked/IMG_2.xmp"_s), jpeg});
    EXPECT_TRUE(console.has(u"[MenuContentView] Will attempt creation during processing instead"_s));
    EXPECT_TRUE(console.has(
        u"[MenuContentView] Manual selection completed: success=1, failed=2, permission errors=2"_s));
    ASSERT_EQ(notified().size(), 2);
    EXPECT_EQ(notified()[0], u"Successfully captioned 1 image.");
    EXPECT_TRUE(notified()[1].startsWith(
        u"Failed to write captions to 2 images. Files: IMG_2.DNG, IMG_4290.JPG. Please grant folder "
        "access permissions. Error: "_s));
    ASSERT_EQ(alerts.titles(), QStringList{u"Permission Error — Cannot Write to Folder"_s});
    const QString text = alerts.shown.first().text;
    EXPECT_TRUE(text.contains(u"\n\nLocation: "_s + locked + u"\n\nThe folder belongs to "_s));
    EXPECT_TRUE(text.endsWith(u" (r-xr-xr-x); you may not write into it."_s)) << text.toStdString();
    EXPECT_EQ(workspace.links, QList<QUrl>{QUrl::fromLocalFile(locked)});
    EXPECT_EQ(status.lastMessage(), u"Captioned 1 image, failed 2");
    expectIdle();

    alerts.answer = 1; // choose another watch folder
    caption({jpeg});
    setMode(locked, 0755);
    EXPECT_EQ(workspace.links.size(), 1);
    EXPECT_EQ(folderWanted.size(), 1);
    EXPECT_EQ(status.lastMessage(), u"Failed to caption 1 image");
}

TEST_F(SelectionSourceTest, ARateLimitIsNoMatterOfPermissions) {
    model.enqueue(refusal(429));
    caption({jpegImage(u"IMG_1.JPG"_s)});
    EXPECT_TRUE(console.has(u"[Manual Selection] Failed to process IMG_1.JPG: Rate limit exceeded"_s));
    EXPECT_EQ(notified(), QStringList{u"Failed to caption 1 image. Files: IMG_1.JPG."_s});
    EXPECT_TRUE(alerts.shown.isEmpty());
}

TEST_F(SelectionSourceTest, AKeyThatIsRemovedEndsTheRun) {
    const QStringList images = jpegs(12);
    QObject::connect(&status, &StatusStore::currentFileNameChanged, &status, [this] {
        if (reports.isEmpty()) {
            defaults.remove(apiKeyName); // during the only batch of the first run
        }
    });
    QObject::connect(&analyzer, &Analyzer::imageFinished, &analyzer, [this] {
        if (reports.size() == 20) {
            defaults.remove(apiKeyName); // between the batches of the second run
        }
    });
    for (const qsizetype requests : {0, 1}) {
        caption(images.first(requests == 0 ? 10 : 12)); // the first run is a single batch
        EXPECT_EQ(model.requests().size(), requests);
        EXPECT_EQ(alerts.titles(), QStringList(requests + 1, u"OpenAI API Key Required"_s));
        EXPECT_EQ(status.lastMessage(), u"Please add your API key in Settings.");
        EXPECT_EQ(status.processed(), 10 * requests);
        EXPECT_TRUE(notified().isEmpty());
        expectIdle();
        defaults.set(apiKeyName, u"test-key"_s);
    }
    EXPECT_EQ(status.failed(), 0) << "images of a batch that never began have not failed";
    defaults.remove(apiKeyName);
    caption(images);
    EXPECT_EQ(reports.size(), 20) << "nothing was tried";
    EXPECT_EQ(alerts.shown.size(), 3);
}

} // namespace ostrelle
