// SPDX-License-Identifier: GPL-3.0-or-later
#include "shell/MenuContentView.h"

#include "shell/ActionButton.h"
#include "shell/ColorSwatchPicker.h"
#include "shell/InfoButton.h"
#include "shell/Picker.h"
#include "shell/Popover.h"
#include "shell/ProgressLine.h"
#include "shell/ShellFixture.h"
#include "shell/Switch.h"
#include "support/Await.h"

#include <gtest/gtest.h>

#include <QAccessible>
#include <QDropEvent>
#include <QLabel>
#include <QLineEdit>
#include <QMimeData>
#include <QSemaphore>
#include <QSignalSpy>
#include <QTest>
#include <QThreadPool>

namespace ostrelle {

using namespace Qt::StringLiterals;

namespace {

class MenuContentViewTest : public testing::Test {
protected:
    MenuContentViewTest() {
        panel.resize(480, 600);
        panel.show();
    }
    ~MenuContentViewTest() override { await(panel.finished()); }

    template <typename Widget = QWidget>
    Widget* find(const QString& name) {
        auto* widget = panel.findChild<Widget*>(name);
        EXPECT_TRUE(widget) << name.toStdString();
        return widget;
    }
    void click(const QString& name) {
        QTest::mouseClick(find(name), Qt::LeftButton);
        await(panel.finished());
    }
    bool isShown(const QString& name) { return find(name)->isVisible(); }
    QString textOf(const QString& name) { return find<QLabel>(name)->text(); }

    void configure(bool key, bool folder, bool roster) {
        world.defaults.set(u"OPENAI_API_KEY"_s, key ? u"key"_s : QString());
        const auto path = folder ? std::optional(world.folder.path()) : std::nullopt;
        world.settings.setIngestFolder(path);
        world.settings.setDestinationFolder(path);
        world.settings.setCodeReplacementsFile(roster ? std::optional(u"/nowhere/roster.txt"_s)
                                                      : std::nullopt);
    }
    QString touch(const QString& name) {
        QFile file(world.folder.filePath(name));
        EXPECT_TRUE(file.open(QIODevice::WriteOnly));
        return file.fileName();
    }

    /// Whether the panel takes the files, which are dropped then.
    bool drop(const QStringList& paths, Qt::DropActions offered = Qt::CopyAction | Qt::MoveAction) {
        QMimeData data;
        QList<QUrl> urls;
        for (const QString& path : paths) {
            urls.append(QUrl::fromLocalFile(path));
        }
        data.setUrls(urls);
        QDragEnterEvent enter(QPoint(200, 200), offered, &data, Qt::LeftButton, Qt::NoModifier);
        enter.ignore();
        QApplication::sendEvent(&panel, &enter);
        QDropEvent event(QPointF(200, 200), offered, &data, Qt::LeftButton, Qt::NoModifier);
        event.ignore();
        QApplication::sendEvent(&panel, &event);
        EXPECT_EQ(enter.isAccepted(), event.isAccepted());
        EXPECT_TRUE(!event.isAccepted() || event.dropAction() == Qt::CopyAction);
        await(panel.finished());
        return event.isAccepted();
    }

    /// What the progress shows: words, count and the bar's per mille, each row in a line.
    QStringList progress() {
        QStringList lines;
        for (int row = 0;; ++row) {
            const auto* view = panel.findChild<QWidget*>(u"progressRow%1"_s.arg(row));
            if (view == nullptr) {
                return lines;
            }
            if (!view->isVisible()) {
                continue;
            }
            QStringList parts;
            for (const QLabel* label : view->findChildren<QLabel*>()) {
                parts.append(label->isVisible() ? label->text() : QString());
            }
            const auto* bar = view->findChild<ProgressLine*>();
            parts.append(bar->isVisible() ? QString::number(qRound(bar->fraction() * 1000)) : QString());
            lines.append(parts.join(u'|'));
        }
    }

    ShellWorld world;
    MenuContentView panel{world.parts};
};

struct Guarded {
    SourceType source;
    bool key;
    bool folder;
    bool roster;
    QString title;
    QString textHolds;
};

} // namespace

TEST_F(MenuContentViewTest, EachActionTellsWhatIsMissing) {
    const Guarded rows[] = {
        {SourceType::local, true, false, true, u"Configuration Required"_s,
         u"Please select a Watch Folder before processing. You can also place a 'code-replacements.txt'"_s},
        {SourceType::local, true, true, false, u"Configuration Required"_s,
         u"Please select a Code Replacements File before processing."_s},
        {SourceType::local, false, false, false, u"Configuration Required"_s,
         u":\n• OpenAI API Key\n• Watch Folder\n• Code Replacements File"_s},
        {SourceType::ftp, true, false, false, u"Configuration Required"_s,
         u":\n• Destination Folder\n• Code Replacements File"_s},
    };
    QSignalSpy downloads(&world.events, &AppEvents::triggerManualFTPDownload);
    world.alerts.answer = 1; // what confirms, were it to come that far
    for (const Guarded& row : rows) {
        world.settings.setSourceType(row.source);
        configure(row.key, row.folder, row.roster);
        for (const QString& button : {u"selectImages"_s, u"captionAll"_s}) {
            world.alerts.shown.clear();
            click(button);
            ASSERT_EQ(world.alerts.shown.size(), 1) << button.toStdString();
            EXPECT_EQ(world.alerts.shown.first().title, row.title);
            EXPECT_TRUE(world.alerts.shown.first().text.contains(row.textHolds))
                << world.alerts.shown.first().text.toStdString();
        }
    }
    EXPECT_TRUE(world.files.asked.isEmpty());
    EXPECT_TRUE(downloads.isEmpty());
    EXPECT_FALSE(world.status.lastMessage());
}

TEST_F(MenuContentViewTest, AutoModeThatIsRefusedNeverLooksOn) {
    const Guarded rows[] = {
        {SourceType::local, false, true, true, u"OpenAI API Key Required"_s, u"enabling auto-processing"_s},
        {SourceType::local, true, false, false, u"Configuration Required"_s, u"both the Watch Folder and"_s},
        {SourceType::ftp, true, false, true, u"Destination Folder Required"_s,
         u"Please select a Destination Folder before"_s},
        {SourceType::local, true, true, false, u"Code Replacements File Required"_s,
         u"Please select a Code Replacements File before"_s},
        {SourceType::local, true, true, true, {}, {}},
    };
    auto* toggle = find<Switch>(u"autoMode"_s);
    QSignalSpy toggled(toggle, &Switch::toggled);
    for (const Guarded& row : rows) {
        world.settings.setSourceType(row.source);
        configure(row.key, row.folder, row.roster);
        world.alerts.shown.clear();
        toggle->setFocus();
        QTest::keyClick(toggle, Qt::Key_Space);
        await(panel.finished());
        const bool isOn = row.title.isEmpty();
        EXPECT_EQ(world.settings.autoMode(), isOn);
        EXPECT_EQ(toggle->isChecked(), isOn);
        EXPECT_EQ(toggled.size(), isOn ? 1 : 0);
        ASSERT_EQ(world.alerts.shown.size(), isOn ? 0 : 1);
        EXPECT_TRUE(isOn || (world.alerts.shown.first().title == row.title &&
                             world.alerts.shown.first().text.contains(row.textHolds)))
            << row.title.toStdString();
    }
    configure(false, false, false);
    click(u"autoMode"_s); // off needs nothing
    EXPECT_FALSE(world.settings.autoMode());
    EXPECT_FALSE(toggle->isChecked());
}

TEST_F(MenuContentViewTest, ARosterInTheWatchFolderIsEnough) {
    configure(true, true, false);
    touch(u"code_replacements.txt"_s);
    click(u"autoMode"_s);
    EXPECT_TRUE(world.settings.autoMode());
    world.settings.setAutoMode(false);
    world.settings.setSourceType(SourceType::ftp);
    click(u"autoMode"_s);
    EXPECT_FALSE(world.settings.autoMode());
    EXPECT_EQ(world.alerts.shown.last().title, u"Code Replacements File Required"_s);
}

TEST_F(MenuContentViewTest, WhileOneQuestionIsOpenNoOtherIsBegun) {
    configure(true, true, false);
    QSemaphore folderAnswers; // which has to be looked into first
    world.threads.of(world.folder.path())->start([&folderAnswers] { folderAnswers.acquire(); });
    for (const QString& name : {u"selectImages"_s, u"selectImages"_s, u"captionAll"_s, u"autoMode"_s}) {
        QTest::mouseClick(find(name), Qt::LeftButton);
    }
    auto closing = std::make_unique<MenuContentView>(world.parts);
    QTest::mouseClick(closing->findChild<ActionButton*>(u"selectImages"_s), Qt::LeftButton);
    QCoro::Task<> finished = closing->finished();
    closing.reset();
    EXPECT_TRUE(world.alerts.shown.isEmpty());
    folderAnswers.release();
    await(panel.finished());
    await(std::move(finished));
    EXPECT_EQ(world.alerts.shown.size(), 1) << "the panel that has closed has nobody left to ask";
}

TEST_F(MenuContentViewTest, AllImagesAreCaptionedOnlyAfterAYes) {
    configure(true, true, true);
    QSignalSpy downloads(&world.events, &AppEvents::triggerManualFTPDownload);
    for (const SourceType source : {SourceType::local, SourceType::ftp}) {
        world.settings.setSourceType(source);
        for (const int answer : {0, 1}) {
            world.alerts.answer = answer;
            world.status.setLastMessage(std::nullopt);
            click(u"captionAll"_s);
            const bool ranLocally = world.status.lastMessage().has_value();
            EXPECT_EQ(ranLocally, source == SourceType::local && answer == 1);
            EXPECT_EQ(downloads.size(), source == SourceType::ftp && answer == 1 ? 1 : 0);
        }
    }
    EXPECT_EQ(world.alerts.shown.first().buttons, (QStringList{u"Cancel"_s, u"Caption All"_s}));
    EXPECT_EQ(world.alerts.shown.last().title, u"Download and Caption All Files?"_s);
}

TEST_F(MenuContentViewTest, ASelectionBeginsInTheFolderAndGoesOnByItsOwnRules) {
    configure(true, true, true);
    click(u"selectImages"_s); // and cancel
    ASSERT_EQ(world.files.asked.size(), 1);
    EXPECT_EQ(world.files.asked.first().startFolder, world.folder.path());
    EXPECT_TRUE(world.alerts.shown.isEmpty());
    world.files.answer = {touch(u"a.cr3"_s)};
    click(u"selectImages"_s);
    ASSERT_EQ(world.alerts.shown.size(), 1);
    EXPECT_EQ(world.alerts.shown.first().title, u"RAW files selected without XMP sidecars"_s);
}

TEST_F(MenuContentViewTest, TheActionsRestWhileImagesComeOrAreCaptioned) {
    const struct {
        SourceType source;
        bool isProcessing;
        bool isDownloading;
        bool canSelect;
        bool canCaptionAll;
    } rows[] = {{SourceType::local, false, false, true, true}, {SourceType::local, true, false, false, false},
                {SourceType::local, false, true, true, true},  {SourceType::ftp, false, true, true, false},
                {SourceType::ftp, true, false, false, false},  {SourceType::ftp, false, false, true, true}};
    for (const auto& row : rows) {
        world.settings.setSourceType(row.source);
        world.status.setIsProcessing(row.isProcessing);
        world.status.setFtpIsDownloading(row.isDownloading);
        for (const auto& [name, enabled] :
             {std::pair(u"selectImages"_s, row.canSelect), std::pair(u"captionAll"_s, row.canCaptionAll)}) {
            EXPECT_EQ(find(name)->isEnabled(), enabled);
            EXPECT_EQ(find(name)->toolTip().isEmpty(), enabled) << "the tooltip says why";
        }
    }
}

TEST_F(MenuContentViewTest, WhatIsShownFollowsTheSettings) {
    SettingsStore& settings = world.settings;
    EXPECT_EQ(textOf(u"watchFolder"_s), u"None"_s);
    EXPECT_TRUE(isShown(u"keyNotice"_s));
    settings.setHasAPIKey(true);
    EXPECT_FALSE(isShown(u"keyNotice"_s));
    settings.setIngestFolder(u"/photos/2025-10-26 UK–Tenn/"_s);
    EXPECT_EQ(textOf(u"watchFolder"_s), u"2025-10-26 UK–Tenn"_s);

    settings.setSourceType(SourceType::ftp);
    EXPECT_EQ(find<Picker>(u"source"_s)->currentText(), u"FTP Server"_s);
    EXPECT_FALSE(isShown(u"watchFolderRow"_s));
    EXPECT_TRUE(isShown(u"ftpIncomplete"_s) && isShown(u"destinationFolderRow"_s));
    settings.setFtpHost(u"ftp.gameday.example"_s);
    EXPECT_FALSE(isShown(u"ftpIncomplete"_s));
    EXPECT_EQ(textOf(u"ftpHost"_s), u"ftp.gameday.example"_s);
    EXPECT_EQ(find(u"autoMode"_s)->accessibleName(),
              u"Automatically Download/Caption New Images Added to FTP Server"_s);

    settings.setSport(Sport::football);
    settings.setIncludeOffenseDefense(true);
    EXPECT_TRUE(isShown(u"includeOffenseDefense"_s) && find<Switch>(u"includeOffenseDefense"_s)->isChecked());
    settings.setSport(Sport::horseRacing); // stored, though no longer offered
    EXPECT_FALSE(isShown(u"includeOffenseDefense"_s));
    EXPECT_EQ(find<Picker>(u"sport"_s)->placeholderText(), u"Horse Racing"_s);

    settings.setUseTeamIdentification(true);
    settings.setTeam2Name(u"Tennessee"_s);
    settings.setTeam2Color(u"Orange"_s);
    EXPECT_TRUE(isShown(u"team2NameRow"_s));
    EXPECT_EQ(find<QLineEdit>(u"team2Name"_s)->text(), u"Tennessee"_s);
    EXPECT_EQ(find<ColorSwatchPicker>(u"team2Color"_s)->colorName(), u"Orange"_s);
}

TEST_F(MenuContentViewTest, WhatTheUserSetsIsStoredAtOnce) {
    SettingsStore& settings = world.settings;
    settings.setUseTeamIdentification(true);
    QTest::keyClicks(find(u"team1Name"_s), u"Kentucky"_s);
    EXPECT_EQ(world.defaults.get<QString>(u"team1Name"_s), u"Kentucky"_s);
    QTest::keyClick(find(u"team1Name"_s), Qt::Key_Home);
    QTest::keyClicks(find(u"team1Name"_s), u"UK "_s); // the caret stays put between letters
    EXPECT_EQ(settings.team1Name(), u"UK Kentucky"_s);
    const QString color = settings.team1Color();
    QTest::keyClick(find(u"team1Color"_s), Qt::Key_Down);
    EXPECT_NE(settings.team1Color(), color);
    QTest::keyClick(find(u"sport"_s), Qt::Key_Home);
    EXPECT_EQ(settings.sport(), Sport::baseball);
    QTest::keyClick(find(u"source"_s), Qt::Key_Down);
    EXPECT_EQ(settings.sourceType(), SourceType::ftp);
    for (const QString& name : {u"prioritizeAudioFiles"_s, u"useTeamIdentification"_s}) {
        const bool before = settings.property(name.toUtf8()).toBool();
        click(name);
        EXPECT_EQ(settings.property(name.toUtf8()).toBool(), !before) << name.toStdString();
    }
    world.files.answer = {world.folder.path()};
    click(u"destinationFolderChoose"_s);
    EXPECT_EQ(settings.destinationFolder(), world.folder.path());
    EXPECT_FALSE(settings.ingestFolder());
    world.files.answer.clear();
    click(u"destinationFolderChoose"_s); // cancelled
    EXPECT_EQ(settings.destinationFolder(), world.folder.path());
}

TEST_F(MenuContentViewTest, TheCountdownMovesNothing) {
    world.settings.setAutoMode(true);
    EXPECT_EQ(textOf(u"autoModeStatus"_s), u"Auto Processing: On"_s);
    world.status.setNextScanCountdown(7);
    EXPECT_EQ(textOf(u"autoModeStatus"_s), u"Auto Processing: On (next scan: 7s)"_s);
    QApplication::processEvents();
    const auto places = [this] {
        QList<QRect> places;
        for (const QString& name : {u"autoMode"_s, u"selectImages"_s, u"captionAll"_s, u"settingsScroll"_s}) {
            places.append(QRect(find(name)->mapTo(&panel, QPoint()), find(name)->size()));
        }
        return places;
    };
    const QList<QRect> before = places();
    world.status.setNextScanCountdown(1);
    QApplication::processEvents();
    EXPECT_EQ(places(), before);
}

TEST_F(MenuContentViewTest, TheProgressTellsWhatGoesOn) {
    StatusStore& status = world.status;
    EXPECT_FALSE(isShown(u"progress"_s));
    status.setIsProcessing(true);
    status.setTotalFiles(1);
    EXPECT_EQ(progress(), (QStringList{u"1 images||"_s, u"Processing...||"_s}));
    status.setTotalFiles(21);
    status.setTotalBatchCount(3);
    status.setCurrentBatchNumber(3);
    status.setCurrentBatchSize(1);
    status.setCurrentFileName(u"2N6A4471.CR3"_s);
    const QStringList lines = progress();
    ASSERT_EQ(lines.size(), 4);
    EXPECT_EQ(lines[0], u"Processing 21 images total||"_s);
    EXPECT_EQ(lines[1], u"2N6A4471.CR3||"_s);
    EXPECT_TRUE(lines[2].startsWith(u"Batch 3: 1 image||"_s));
    EXPECT_TRUE(lines[3].startsWith(u"Batch 3/3||"_s));

    world.settings.setSourceType(SourceType::ftp);
    status.setCurrentFileIndex(3);
    ASSERT_EQ(progress().size(), 2);
    EXPECT_EQ(progress()[1], u"Processing and Captioning: 2N6A4471.CR3|3/21|"_s);
    status.setIsProcessing(false);
    EXPECT_FALSE(isShown(u"progress"_s));
    status.setFtpIsDownloading(true);
    status.setFtpStatusMessage(u"Downloading 4 files"_s);
    status.setFtpTotalBytesToDownload(1000);
    status.setFtpDownloadProgress(0.25);
    EXPECT_EQ(progress(), (QStringList{u"Downloading 4 files||"_s, u"||250"_s}));
}

TEST_F(MenuContentViewTest, ANameOfAnyLengthLeavesThePanelItsWidth) {
    for (const SourceType source : {SourceType::ftp, SourceType::local}) {
        world.settings.setSourceType(source);
        world.status.setIsProcessing(true);
        for (const QString& name : {u"x"_s, QString(300, u'x')}) {
            world.settings.setIngestFolder(u"/photos/"_s + name);
            world.settings.setFtpHost(name);
            world.status.setCurrentFileName(name);
            QApplication::processEvents();
            EXPECT_LE(panel.minimumSizeHint().width(), 320);
            EXPECT_EQ(panel.width(), 480);
        }
    }
}

TEST_F(MenuContentViewTest, WhatIsDroppedTakesItsPlace) {
    const QString folder = world.folder.path();
    for (const SourceType source : {SourceType::local, SourceType::ftp}) {
        world.settings.setSourceType(source);
        EXPECT_TRUE(drop({folder}));
    }
    EXPECT_EQ(world.settings.ingestFolder(), folder);
    EXPECT_EQ(world.settings.destinationFolder(), folder);
    EXPECT_TRUE(drop({touch(u"Roster.TXT"_s)}));
    EXPECT_EQ(world.settings.codeReplacementsFile(), world.folder.filePath(u"Roster.TXT"_s));

    EXPECT_TRUE(drop({u"/photos/a.jpg"_s}));
    EXPECT_EQ(world.alerts.shown.last().title, u"Configuration Required"_s);
    configure(true, true, true);
    EXPECT_TRUE(drop({u"/photos/a.nef"_s, u"/photos/b.jpg"_s}));
    EXPECT_EQ(world.alerts.shown.last().title, u"RAW files selected without XMP sidecars"_s);

    const QStringList useless[] = {{},
                                   {u"/photos/a.xmp"_s},
                                   {u"/photos/a.jpg"_s, u"/photos/a.pdf"_s},
                                   {folder, folder},
                                   {u"/photos/a.txt"_s, u"/photos/b.txt"_s}};
    for (const QStringList& files : useless) {
        EXPECT_FALSE(drop(files)) << files.join(u',').toStdString();
    }
    EXPECT_FALSE(drop({u"/photos/a.jpg"_s}, Qt::MoveAction)) << "files are never taken away";
    world.status.setIsProcessing(true);
    EXPECT_FALSE(drop({u"/photos/a.jpg"_s})) << "no second run";
    EXPECT_TRUE(drop({folder}));
}

TEST_F(MenuContentViewTest, TheKeyboardReachesEverythingFromTopToBottom) {
    world.settings.setUseTeamIdentification(true);
    world.settings.setSourceType(SourceType::ftp);
    panel.activateWindow();
    find(u"keySettings"_s)->setFocus();
    QStringList visited;
    for (QWidget* widget = panel.focusWidget(); !visited.contains(widget->objectName());
         widget = panel.focusWidget()) {
        visited.append(widget->objectName());
        const auto* shown = QAccessible::queryAccessibleInterface(widget);
        EXPECT_FALSE(shown->text(QAccessible::Name).isEmpty()) << widget->objectName().toStdString();
        QTest::keyClick(widget, Qt::Key_Tab);
    }
    EXPECT_EQ(visited.join(u' ').toStdString(),
              "keySettings source ftpSettings destinationFolderInfo destinationFolderChoose "
              "codeReplacementsChoose sportInfo sport prioritizeAudioFilesInfo prioritizeAudioFiles "
              "useTeamIdentificationInfo useTeamIdentification team1Name team1Color team2Name team2Color "
              "includeOffenseDefenseInfo includeOffenseDefense alwaysOverwriteCaptionsInfo "
              "alwaysOverwriteCaptions autoMode selectImages captionAll sendFeedback iptcHelp");
}

TEST_F(MenuContentViewTest, ButtonsLeadElsewhereAndExplanationsCloseAgain) {
    world.settings.setSourceType(SourceType::ftp);
    QSignalSpy settings(&world.events, &AppEvents::showSettingsWindow);
    QSignalSpy help(&world.events, &AppEvents::showHelpWindow);
    click(u"keySettings"_s);
    click(u"ftpSettings"_s);
    panel.activateWindow();
    QApplication::processEvents();
    QTest::keyClick(&panel, Qt::Key_I, Qt::AltModifier);
    waitUntil([&help] { return help.size() == 1; }); // the button is seen to be pressed first
    click(u"sendFeedback"_s);
    EXPECT_EQ(settings.size(), 2);
    EXPECT_EQ(world.workspace.links.size(), 1);
    for (InfoButton* info : panel.findChildren<InfoButton*>()) {
        QTest::keyClick(info, Qt::Key_Space);
        ASSERT_TRUE(info->popover()) << info->objectName().toStdString();
        QTest::keyClick(info->popover(), Qt::Key_Escape);
        EXPECT_TRUE(info->popover() == nullptr || !info->popover()->isVisible());
    }
}

} // namespace ostrelle
