// SPDX-License-Identifier: GPL-3.0-or-later
#include "shell/MenuContentViewFixture.h"
#include "shell/toolkit/ActionButton.h"
#include "shell/toolkit/Switch.h"

#include <QDir>
#include <QMessageBox>
#include <QSemaphore>
#include <QSignalSpy>
#include <QThreadPool>

namespace ostrelle {

using namespace Qt::StringLiterals;

namespace {

class PanelActionsTest : public MenuContentViewTest {};

struct Guarded {
    SourceType source;
    bool key;
    bool folder;
    bool roster;
    QString title;
    QString textHolds;
};

} // namespace

TEST_F(PanelActionsTest, EachActionTellsWhatIsMissing) {
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

TEST_F(PanelActionsTest, AutoModeThatIsRefusedNeverLooksOn) {
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

TEST_F(PanelActionsTest, ARosterInTheWatchFolderIsEnough) {
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

TEST_F(PanelActionsTest, WhileOneQuestionIsOpenNoOtherIsBegun) {
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

TEST_F(PanelActionsTest, AllImagesAreCaptionedOnlyAfterAYes) {
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

TEST_F(PanelActionsTest, ASelectionBeginsInTheFolderAndGoesOnByItsOwnRules) {
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

TEST_F(PanelActionsTest, TheActionsRestWhileImagesComeOrAreCaptioned) {
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

TEST_F(PanelActionsTest, WhatIsDroppedTakesItsPlace) {
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
    EXPECT_TRUE(drop({touch(u"plan.pdf"_s)})) << "a folder may have any name";
    EXPECT_EQ(world.alerts.shown.last().title, u"File Not Used"_s);
    EXPECT_EQ(world.settings.destinationFolder(), folder);
    {
        QMessageBox question;
        question.open();
        EXPECT_FALSE(drop({folder}) || drop({u"/photos/a.jpg"_s})) << "it is to be answered first";
    }
    world.status.setIsProcessing(true);
    EXPECT_FALSE(drop({u"/photos/a.jpg"_s})) << "no second run";
    const QString odd = world.folder.filePath(u"Game.txt"_s);
    EXPECT_TRUE(QDir().mkdir(odd));
    EXPECT_TRUE(drop({odd}));
    EXPECT_EQ(world.settings.destinationFolder(), odd);
}

} // namespace ostrelle
