// SPDX-License-Identifier: GPL-3.0-or-later
#include "pipeline/SelectionSource.h"

#include "pipeline/PipelineFixture.h"

#include <QFileInfo>
#include <QSignalSpy>

namespace ostrelle {

using namespace Qt::StringLiterals;

namespace {

/// A desktop that keeps the links that it is to open.
class RecordingWorkspace : public Workspace {
public:
    void openLink(const QUrl& link) override { opened.append(link); }
    void bringToFront() override {}

    QList<QUrl> opened;
};

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
    QString lockedFolder() const {
        const QString locked = folder.filePath(u"locked"_s);
        EXPECT_TRUE(QDir().mkpath(locked));
        return locked;
    }
    QList<qsizetype> pictureCounts() const {
        QList<qsizetype> counts;
        for (const HttpRequest& request : model.requests()) {
            counts.append(request.body.count("\"image_url\":{"));
        }
        return counts;
    }
    QStringList notified() const {
        QStringList messages;
        for (const DesktopNotification& notification : notificationCenter.posted) {
            messages.append(notification.title + u": "_s + notification.body);
        }
        return messages;
    }
    void expectIdle() const {
        EXPECT_FALSE(status.isProcessing() || status.isWaitingForAPI() || status.currentFileName());
        EXPECT_EQ(status.currentFileIndex(), 0);
        EXPECT_EQ(status.totalFiles(), 0);
        EXPECT_EQ(status.currentBatchSize(), 0);
        EXPECT_FALSE(turns.hasRun());
        EXPECT_GT(access.begun, 0);
        EXPECT_EQ(access.begun, access.ended);
    }

    RecordingWorkspace workspace;
    QSignalSpy settingsShown{&events, &AppEvents::showSettingsWindow};
    QSignalSpy timed{&status, &StatusStore::batchFinished};
};

} // namespace

TEST_F(SelectionSourceTest, ImagesAreCaptionedTenAtATime) {
    const QStringList images = jpegs(25);
    QStringList messages;
    QObject::connect(&status, &StatusStore::lastMessageChanged, &status,
                     [&] { messages.append(status.lastMessage().value_or(QString())); });
    caption(images);
    EXPECT_EQ(pictureCounts(), (QList<qsizetype>{10, 10, 5}));
    for (const QString& image : images) {
        EXPECT_TRUE(captionOf(image).value_or(QString()).contains(QFileInfo(image).fileName()));
    }
    EXPECT_EQ(messages.first(), u"Processing 25 selected images...");
    EXPECT_TRUE(messages.contains(u"✓ IMG_25.JPG (25/25)"_s));
    EXPECT_EQ(status.lastMessage(), u"Successfully captioned 25 images");
    EXPECT_EQ(notified(), QStringList{u"Ostrelle Captioning Complete: Successfully captioned 25 images."_s});
    EXPECT_TRUE(alerts.shown.isEmpty());
    EXPECT_EQ(timed.size(), 1);
    EXPECT_TRUE(console.lines.contains(
        u"[MenuContentView] Manual selection completed: success=25, failed=0, permission errors=0"_s));
    expectIdle();
}

TEST_F(SelectionSourceTest, ASelectionThatIsNotCaptionedIsExplained) {
    const QString raw = rawImage();
    sidecar("Beside it, but not chosen");
    caption({raw, jpegImage(u"IMG_2.JPG"_s)});
    caption({folder.filePath(u"IMG_1.xmp"_s), folder.filePath(u"roster.txt"_s)});
    EXPECT_EQ(alerts.titles(),
              (QStringList{u"RAW files selected without XMP sidecars"_s, u"No Images Selected"_s}));
    EXPECT_TRUE(model.requests().isEmpty());
    EXPECT_FALSE(status.lastMessage());
    expectIdle();
}

TEST_F(SelectionSourceTest, AChosenSidecarThatIsMissingIsMadeFirst) {
    const QString raw = rawImage();
    const QString other = rawImage(u"IMG_2.DNG"_s);
    sidecar("Stub", u"IMG_2.xmp"_s);
    caption({raw, folder.filePath(u"img_1.xmp"_s), other, folder.filePath(u"IMG_2.xmp"_s)});
    EXPECT_TRUE(captionOf(raw).value_or(QString()).contains(u"IMG_1.DNG"_s));
    EXPECT_TRUE(captionOf(other).value_or(QString()).contains(u"IMG_2.DNG"_s));
    const QStringList lines = console.lines.filter(u"XMP"_s).filter(u"[MenuContentView]"_s);
    EXPECT_EQ(lines, (QStringList{u"[MenuContentView] Started security-scoped access for XMP: IMG_1.xmp"_s,
                                  u"[MenuContentView] Created XMP sidecar for IMG_1.DNG"_s,
                                  u"[MenuContentView] Created 1 XMP sidecar file(s) for RAW files"_s}));
    expectIdle();
}

TEST_F(SelectionSourceTest, AFolderThatCannotBeWrittenIsExplainedAfterTheSuccess) {
    const QString locked = lockedFolder();
    const QString raw = rawImage(u"locked/IMG_2.DNG"_s);
    const QString jpeg = jpegImage(u"locked/IMG_4290.JPG"_s);
    setMode(locked, 0555);
    caption({jpegImage(u"IMG_1.JPG"_s), raw, folder.filePath(u"locked/IMG_2.xmp"_s), jpeg});
    setMode(locked, 0755);
    EXPECT_TRUE(
        console.lines.contains(u"[MenuContentView] Will attempt creation during processing instead"_s));
    EXPECT_TRUE(console.lines.contains(
        u"[MenuContentView] Manual selection completed: success=1, failed=2, permission errors=2"_s));
    ASSERT_EQ(notified().size(), 2);
    EXPECT_EQ(notified().at(0), u"Ostrelle Captioning Complete: Successfully captioned 1 image.");
    EXPECT_TRUE(
        notified().at(1).startsWith(u"Permission Error — Action Required: Failed to write captions to "
                                    "2 images. Files: IMG_2.DNG, IMG_4290.JPG. Please grant folder "
                                    "access permissions. Error: "_s));
    ASSERT_EQ(alerts.titles(), QStringList{u"Permission Error — Cannot Write to Folder"_s});
    EXPECT_TRUE(alerts.shown.first().text.endsWith(u"\n\nLocation: "_s + locked));
    EXPECT_EQ(
        workspace.opened,
        QList<QUrl>{QUrl(u"x-apple.systempreferences:com.apple.preference.security?Privacy_AllFiles"_s)});
    EXPECT_EQ(status.lastMessage(), u"Captioned 1 image, failed 2");
    expectIdle();
}

TEST_F(SelectionSourceTest, TheWatchFolderIsOfferedInstead) {
    const QString locked = lockedFolder();
    const QString jpeg = jpegImage(u"locked/IMG_1.JPG"_s);
    alerts.answer = 1;
    setMode(locked, 0555);
    caption({jpeg});
    setMode(locked, 0755);
    EXPECT_TRUE(workspace.opened.isEmpty());
    EXPECT_EQ(settingsShown.size(), 1);
    EXPECT_EQ(status.lastMessage(), u"Failed to caption 1 image");
}

TEST_F(SelectionSourceTest, ARateLimitIsNoMatterOfPermissions) {
    model.enqueue({.status = 429, .body = "{}"});
    caption({jpegImage(u"IMG_1.JPG"_s)});
    EXPECT_TRUE(
        console.lines.contains(u"[Manual Selection] Failed to process IMG_1.JPG: Rate limit exceeded"_s));
    EXPECT_EQ(notified(), QStringList{u"Ostrelle Captioning Failed: Failed to caption 1 image. Files: "
                                      "IMG_1.JPG."_s});
    EXPECT_TRUE(alerts.shown.isEmpty());
}

TEST_F(SelectionSourceTest, AnImageThatIsLeftAloneHasNotFailed) {
    settings.setAlwaysOverwriteCaptions(false);
    const QString raw = rawImage();
    sidecar("A caption that is long enough to be somebody's own work on it");
    caption({raw, folder.filePath(u"IMG_1.xmp"_s), jpegImage(u"IMG_2.JPG"_s)});
    EXPECT_EQ(status.lastMessage(), u"Successfully captioned 1 image");
    EXPECT_EQ(notified().size(), 1);
}

TEST_F(SelectionSourceTest, WithoutAKeyNothingIsAttempted) {
    defaults.remove(apiKeyName);
    caption({jpegImage(u"IMG_1.JPG"_s)});
    EXPECT_EQ(alerts.titles(), QStringList{u"OpenAI API Key Required"_s});
    EXPECT_EQ(settingsShown.size(), 1);
    EXPECT_EQ(status.lastMessage(), u"Please add your API key in Settings.");
    alerts.answer = 1;
    caption({jpegImage(u"IMG_1.JPG"_s)});
    EXPECT_EQ(settingsShown.size(), 1);
    EXPECT_TRUE(model.requests().isEmpty());
    expectIdle();
}

TEST_F(SelectionSourceTest, AKeyThatIsRemovedEndsTheRun) {
    const QStringList images = jpegs(21);
    const struct {
        qsizetype afterReports;
        qsizetype requests;
    } rows[] = {{0, 0}, {10, 1}, {20, 2}};
    for (const auto& row : rows) {
        defaults.set(apiKeyName, u"test-key"_s);
        reports.clear();
        alerts.shown.clear();
        const qsizetype before = model.requests().size();
        const QMetaObject::Connection removal =
            QObject::connect(&status, &StatusStore::currentFileNameChanged, &status, [&] {
                if (reports.size() >= row.afterReports) {
                    defaults.remove(apiKeyName);
                }
            });
        caption(images);
        QObject::disconnect(removal);
        EXPECT_EQ(model.requests().size() - before, row.requests);
        EXPECT_EQ(alerts.titles(), QStringList{u"OpenAI API Key Required"_s});
        EXPECT_EQ(status.lastMessage(), u"Please add your API key in Settings.");
        EXPECT_TRUE(notified().isEmpty());
        expectIdle();
    }
}

TEST_F(SelectionSourceTest, NoBatchBeginsWithoutAKey) {
    QObject::connect(&analyzer, &Analyzer::imageFinished, &analyzer, [this] {
        if (reports.size() == 10) {
            defaults.remove(apiKeyName);
        }
    });
    caption(jpegs(12));
    EXPECT_EQ(alerts.titles(), QStringList{u"OpenAI API Key Required"_s});
    EXPECT_EQ(status.processed(), 10);
    EXPECT_EQ(status.failed(), 0);
}

TEST_F(SelectionSourceTest, OthersWaitUntilTheRunIsDone) {
    QStringList order;
    QObject::connect(&analyzer, &Analyzer::imageFinished, &analyzer,
                     [&](const ImageOutcome& report) { order.append(QFileInfo(report.file).fileName()); });
    const QStringList images = jpegs(11);
    const auto first = start(images);
    const auto second = start({jpegImage(u"SECOND.JPG"_s)});
    const QCoro::Task<bool> single = analyzer.analyzeSingle(jpegImage(u"SINGLE.JPG"_s));
    driveUntil([&] { return first.isReady() && second.isReady() && single.isReady(); });
    ASSERT_EQ(order.size(), 13);
    EXPECT_EQ(order.at(10), u"IMG_11.JPG");
    EXPECT_EQ(order.at(11), u"SECOND.JPG");
    EXPECT_EQ(order.at(12), u"SINGLE.JPG");
}

TEST_F(SelectionSourceTest, AnOpenAlertHoldsNobodyUp) {
    const QString locked = lockedFolder();
    const QString jpeg = jpegImage(u"locked/IMG_1.JPG"_s);
    alerts.isOpen = true;
    setMode(locked, 0555);
    const auto run = start({jpeg});
    driveUntil([this] { return !alerts.shown.isEmpty(); });
    setMode(locked, 0755);
    EXPECT_FALSE(status.isProcessing());
    EXPECT_LT(access.ended, access.begun); // the folder stays open to the run
    const auto other = start({jpegImage(u"IMG_2.JPG"_s)});
    driveUntil([&other] { return other.isReady(); });
    EXPECT_EQ(status.lastMessage(), u"Successfully captioned 1 image");
    alerts.close();
    driveUntil([&run] { return run.isReady(); });
    expectIdle();
}

TEST_F(SelectionSourceTest, TheEndOfTheProgramEndsTheRun) {
    QObject::connect(&status, &StatusStore::currentFileIndexChanged, &status, [this] {
        if (status.currentFileIndex() == 13) {
            turns.close();
        }
    });
    caption(jpegs(25));
    EXPECT_EQ(pictureCounts(), QList<qsizetype>{10});
    EXPECT_TRUE(notified().isEmpty());
    EXPECT_TRUE(alerts.shown.isEmpty());
    expectIdle();
    caption(jpegs(1));
    EXPECT_EQ(model.requests().size(), 1);
}

} // namespace ostrelle
