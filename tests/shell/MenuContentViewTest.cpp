// SPDX-License-Identifier: GPL-3.0-or-later
#include "services/OpenAIError.h"
#include "shell/MenuContentViewFixture.h"
#include "shell/toolkit/ActionButton.h"
#include "shell/toolkit/ColorSwatchPicker.h"
#include "shell/toolkit/Picker.h"
#include "shell/toolkit/ProgressLine.h"
#include "shell/toolkit/StatusMark.h"
#include "shell/toolkit/Switch.h"
#include "state/RecentPaths.h"

#include <QApplication>
#include <QFile>
#include <QInputDialog>
#include <QLineEdit>
#include <QMenu>
#include <QPointer>
#include <QSignalSpy>
#include <QTableWidget>

namespace ostrelle {

using namespace Qt::StringLiterals;

namespace {

/// Activates another window, then this one again.
void comeBackTo(QWidget& window) {
    QWidget another;
    another.show();
    another.activateWindow();
    waitUntil([&another] { return another.isActiveWindow(); });
    window.activateWindow();
    waitUntil([&window] { return window.isActiveWindow(); });
}

/// The progress rows, one per line: text, count and the bar's value per mille.
QStringList progressIn(const QWidget& panel) {
    QStringList lines;
    for (int row = 0;; ++row) {
        const auto* view = panel.findChild<QWidget*>(u"progressRow%1"_s.arg(row));
        if (view == nullptr || !view->isVisible()) {
            return lines;
        }
        const auto* bar = view->findChild<ProgressLine*>();
        lines.append(QStringList{view->findChild<QLabel*>(u"progressText"_s)->text(),
                                 view->findChild<QLabel*>(u"progressCount"_s)->text(),
                                 bar->isVisible() ? QString::number(bar->value()) : QString()}
                         .join(u'|'));
    }
}

} // namespace

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
    click(u"destinationFolderChoose"_s); // the user cancels
    EXPECT_EQ(settings.destinationFolder(), world.folder.path());
}

TEST_F(MenuContentViewTest, TheCountdownMovesNothing) {
    const auto places = [this] {
        QApplication::processEvents();
        QList<QRect> places;
        for (const QString& name : {u"autoMode"_s, u"selectImages"_s, u"captionAll"_s, u"settingsScroll"_s}) {
            places.append(QRect(find(name)->mapTo(view.get(), QPoint()), find(name)->size()));
        }
        return places;
    };
    world.settings.setAutoMode(true);
    world.status.setNextScanCountdown(7);
    const QList<QRect> before = places();
    world.status.setNextScanCountdown(1);
    EXPECT_EQ(textOf(u"autoModeStatus"_s), u"Auto Processing: On (next scan: 1s)"_s);
    EXPECT_EQ(places(), before);
}

TEST_F(MenuContentViewTest, TheProgressShowsTheRowsThatThereAre) {
    StatusStore& status = world.status;
    EXPECT_FALSE(isShown(u"progress"_s));
    status.setTotalFiles(21);
    status.setIsProcessing(true);
    status.setCurrentFileName(u"2N6A4471.CR3"_s);
    world.usage.recordUsage(1'000'000, 0);
    EXPECT_EQ(progressIn(*view),
              (QStringList{u"21 images|$0.1500 today|"_s, u"2N6A4471.CR3|0 of 21|"_s, u"||0"_s}));
    world.settings.setSourceType(SourceType::ftp);
    status.setCurrentFileIndex(3);
    EXPECT_EQ(progressIn(*view),
              (QStringList{u"||143"_s, u"Processing and Captioning: 2N6A4471.CR3|3/21|"_s}));
    status.setIsProcessing(false);
    EXPECT_FALSE(isShown(u"progress"_s));
}

TEST_F(MenuContentViewTest, ARunCanBeStopped) {
    const Overtaking::Mark mark = world.turns.stopMark();
    world.settings.setAutoMode(true);
    EXPECT_FALSE(isShown(u"stop"_s));
    world.status.setIsProcessing(true);
    click(u"stop"_s);
    EXPECT_TRUE(mark.isOvertaken());
    EXPECT_FALSE(world.settings.autoMode()) << "the next scan would begin the images again";
    EXPECT_FALSE(find(u"stop"_s)->isEnabled()) << "until the images in the works are finished";
    world.status.setIsProcessing(false);
    EXPECT_FALSE(isShown(u"stop"_s));
    EXPECT_TRUE(find(u"stop"_s)->isEnabled());
}

TEST_F(MenuContentViewTest, WhatARunCameToStaysInSightUntilTheNext) {
    EXPECT_FALSE(isShown(u"lastMessage"_s));
    world.status.setIsProcessing(true);
    world.status.setLastMessage(u"Captioned 3 images, failed 1"_s);
    EXPECT_FALSE(isShown(u"lastMessage"_s));
    world.status.setIsProcessing(false);
    EXPECT_TRUE(isShown(u"lastMessage"_s));
    EXPECT_EQ(textOf(u"lastMessage"_s), u"Captioned 3 images, failed 1"_s);
    world.status.setLastMessage(u"Auto mode: Off"_s);
    EXPECT_FALSE(isShown(u"lastMessage"_s));
}

TEST_F(MenuContentViewTest, SettingsThatCannotBeSavedAreToldWhileItIsSo) {
    world.defaults.isDiskFull = true;
    world.settings.setTeam1Name(u"Herons"_s);
    EXPECT_FALSE(isShown(u"savingNotice"_s));
    world.clock.advance(std::chrono::seconds(5));
    EXPECT_TRUE(isShown(u"savingNotice"_s));
    comeBackTo(*view);
    EXPECT_TRUE(isShown(u"savingNotice"_s));
    world.defaults.isDiskFull = false;
    comeBackTo(*view);
    EXPECT_FALSE(isShown(u"savingNotice"_s));
}

TEST_F(MenuContentViewTest, AManifestThatCannotBeSavedIsToldWhileItIsSo) {
    EXPECT_FALSE(isShown(u"manifestNotice"_s));
    world.status.setManifestFailure(u"No space left on device."_s);
    EXPECT_TRUE(isShown(u"manifestNotice"_s));
    EXPECT_EQ(
        find(u"manifestNotice"_s)->accessibleName(),
        u"Which images have been captioned could not be saved, so they may be captioned again. No space "
        "left on device."_s);
    world.status.setManifestFailure(std::nullopt);
    EXPECT_FALSE(isShown(u"manifestNotice"_s));
}

TEST_F(MenuContentViewTest, AKeyThatWasStoredInATerminalIsSeenWhenThePanelIsUsedAgain) {
    EXPECT_TRUE(isShown(u"keyNotice"_s));
    world.defaults.set(u"OPENAI_API_KEY"_s, u"sk-other"_s);
    comeBackTo(*view);
    EXPECT_FALSE(isShown(u"keyNotice"_s));
}

TEST_F(MenuContentViewTest, ARosterThatIsPutIntoTheWatchFolderIsSaidToBeUsed) {
    configure(true, true, false);
    const auto* note = find<StatusMark>(u"codeReplacementsNote"_s);
    waitUntil([note] { return note->text().startsWith(u"Needed"); });
    touch(u"code-replacements.txt"_s);
    comeBackTo(*view);
    waitUntil([note] { return note->text().contains(u"code-replacements.txt"_s); });
    EXPECT_EQ(note->tone(), StatusTone::missing) << "it is empty";
    configure(true, true, true);
    world.status.setIsProcessing(true); // a run reads the roster
    waitUntil([note] { return note->isVisible(); });
}

TEST_F(MenuContentViewTest, TheRosterTellsItsEntriesAndListsThem) {
    configure(true, true, false);
    QFile file(touch(u"code-replacements.txt"_s));
    ASSERT_TRUE(file.open(QFile::WriteOnly));
    file.write("k12\tSam Abel\tforward\nno entry\nk7\tLee Oak\n");
    file.close();
    comeBackTo(*view);
    auto* link = find<ActionButton>(u"codeReplacementsLink"_s);
    waitUntil([link] { return link->text() == u"2 entries"; });
    link->click();
    QPointer<QTableWidget> table;
    waitUntil([&table] {
        for (QWidget* window : QApplication::topLevelWidgets()) {
            table = window->findChild<QTableWidget*>(u"rosterEntries"_s);
            if (table) {
                break;
            }
        }
        return table != nullptr;
    });
    EXPECT_EQ(table->rowCount(), 2);
    EXPECT_EQ(table->item(0, 1)->text(), u"Sam Abel\tforward");
    table->window()->close();
}

TEST_F(MenuContentViewTest, OneClickBringsBackALostFolder) {
    for (const char16_t* folder : {u"/photos/a", u"/photos/b & c", u"/photos/d"}) {
        world.settings.setIngestFolder(QString::fromUtf16(folder));
    }
    auto* recent = find<ActionButton>(u"watchFolderRecent"_s);
    ASSERT_EQ(recent->menu()->actions().size(), 2);
    recent->menu()->actions().at(1)->trigger();
    EXPECT_EQ(world.settings.ingestFolder(), u"/photos/a");
    world.settings.setIngestFolder(std::nullopt);
    find<ActionButton>(u"watchFolderLink"_s)->click();
    EXPECT_EQ(world.settings.ingestFolder(), u"/photos/a") << "the last one";
    EXPECT_FALSE(isShown(u"watchFolderLink"_s));

    for (int number = 0; number < 20; ++number) {
        world.settings.setIngestFolder(u"/photos/%1"_s.arg(number));
    }
    EXPECT_EQ(recent->menu()->actions().size(), RecentPaths::mostPaths - 1);
}

TEST_F(MenuContentViewTest, ANewGameIsNamedAndRecalledWithOneChoice) {
    auto* picker = find<Picker>(u"game"_s);
    const auto choose = [picker](const QString& item) {
        picker->setCurrentText(item);
        Q_EMIT picker->activated(picker->currentIndex());
    };
    for (const QString& name : {u" Kentucky  - Ohio "_s, u"Kentucky - Ohio"_s}) {
        choose(u"New Game…"_s);
        auto* dialog = view->window()->findChild<QInputDialog*>(u"newGame"_s);
        ASSERT_TRUE(dialog);
        dialog->setTextValue(name);
        dialog->accept();
        QCoreApplication::sendPostedEvents(nullptr, QEvent::DeferredDelete);
    }
    EXPECT_EQ(picker->currentText(), u"Kentucky - Ohio (2)");
    world.settings.setTeam1Name(u"Lions"_s);
    choose(u"Kentucky - Ohio"_s);
    EXPECT_EQ(world.settings.team1Name(), QString());
    choose(u"Kentucky - Ohio (2)"_s);
    EXPECT_EQ(world.settings.team1Name(), u"Lions");
    world.alerts.answer = 1;
    choose(u"Remove “Kentucky - Ohio (2)”…"_s);
    EXPECT_EQ(picker->currentIndex(), -1);
    EXPECT_EQ(world.settings.team1Name(), u"Lions") << "the settings stay";
    world.status.setIsProcessing(true);
    EXPECT_FALSE(picker->isEnabled()) << "an image would get the other game's names";
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
            EXPECT_LE(view->minimumSizeHint().width(), 320);
            EXPECT_EQ(view->width(), 480);
        }
    }
}

TEST_F(MenuContentViewTest, TheKeyboardReachesEverythingFromTopToBottom) {
    world.settings.setUseTeamIdentification(true);
    world.settings.setSourceType(SourceType::ftp);
    find(u"keySettings"_s)->setFocus();
    EXPECT_EQ(tabStops(find(u"keySettings"_s), {}).join(u' ').toStdString(),
              "keySettings game source ftpSettings destinationFolderInfo destinationFolderChoose "
              "codeReplacementsChoose sportInfo sport panelCaptionStyle prioritizeAudioFilesInfo "
              "prioritizeAudioFiles "
              "useTeamIdentificationInfo useTeamIdentification team1Name team1Color team2Name team2Color "
              "includeOffenseDefenseInfo includeOffenseDefense alwaysOverwriteCaptionsInfo "
              "alwaysOverwriteCaptions autoMode selectImages captionAll iptcHelp");
}

TEST_F(MenuContentViewTest, ButtonsLeadElsewhere) {
    world.settings.setSourceType(SourceType::ftp);
    QSignalSpy settings(&world.events, &AppEvents::showSettingsWindow);
    QSignalSpy server(&world.events, &AppEvents::showServerSettings);
    QSignalSpy help(&world.events, &AppEvents::showHelpWindow);
    click(u"keySettings"_s);
    click(u"ftpSettings"_s);
    QTest::keyClick(view.get(), Qt::Key_I, Qt::AltModifier);
    waitUntil([&help] { return help.size() == 1; }); // the button first shows as pressed
    EXPECT_EQ(settings.size(), 1);
    EXPECT_EQ(server.size(), 1);
}

TEST_F(MenuContentViewTest, WhatFailedStandsWithItsReasonUntilItIsDone) {
    configure(true, true, true);
    writeFile(world.folder.filePath(u"roster.txt"_s), "12\tJohn Smith\n");
    world.settings.setCodeReplacementsFile(world.folder.filePath(u"roster.txt"_s));
    const auto problems = [this] {
        QApplication::processEvents();
        QCoreApplication::sendPostedEvents(nullptr, QEvent::DeferredDelete);
        QStringList words;
        const QList<StatusMark*> labels = view->findChildren<StatusMark*>(u"problemWords"_s);
        for (const StatusMark* label : labels) {
            words += label->isVisible() ? QStringList{label->text()} : QStringList();
        }
        return words;
    };
    const auto end = [this](const QString& name, OutcomeKind kind, const std::exception_ptr& cause = {}) {
        ImageOutcome image;
        image.file = world.folder.filePath(name);
        image.kind = kind;
        image.cause = cause;
        image.reason = u"It is damaged."_s;
        world.analyzer.announceFailure(image);
    };
    const auto refused = std::make_exception_ptr(OpenAIError::http(401, u"{}"_s));
    EXPECT_EQ(problems(), QStringList());
    world.settings.setAutoMode(true);
    auto* dot = find<QWidget>(u"autoModeDot"_s);
    EXPECT_EQ(dot->accessibleName(), u"Watching"_s);
    end(u"IMG_1.JPG"_s, OutcomeKind::failed, refused);
    end(u"IMG_2.JPG"_s, OutcomeKind::failed, refused);
    end(u"IMG_3.JPG"_s, OutcomeKind::failed, {});
    EXPECT_EQ(problems(), (QStringList{u"2 images failed: OpenAI refused the API key (HTTP 401). Enter a "
                                       "valid one."_s,
                                       u"1 image failed: It is damaged."_s}));
    EXPECT_EQ(dot->accessibleName(), u"Needs attention"_s);
    end(u"IMG_1.JPG"_s, OutcomeKind::captioned);
    EXPECT_TRUE(problems().value(0).startsWith(u"1 image failed: OpenAI refused"_s));
    click(u"dismiss"_s);
    EXPECT_EQ(problems(), QStringList{u"1 image failed: It is damaged."_s});
    end(u"IMG_3.JPG"_s, OutcomeKind::skipped);
    world.status.setSourceTrouble(u"The watch folder is not there: /mnt/card"_s);
    EXPECT_EQ(problems(), QStringList{u"The watch folder is not there: /mnt/card"_s});
    world.files.answer = {world.folder.path()};
    click(u"remedy"_s);
    await(view->finished());
    EXPECT_EQ(world.settings.ingestFolder(), world.folder.path());
    world.status.setSourceTrouble(std::nullopt);
    EXPECT_EQ(problems(), QStringList());
    EXPECT_EQ(dot->accessibleName(), u"Watching"_s);
}

} // namespace ostrelle
