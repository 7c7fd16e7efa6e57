// SPDX-License-Identifier: GPL-3.0-or-later
#include "shell/MenuContentViewFixture.h"
#include "shell/toolkit/ActionButton.h"
#include "shell/toolkit/Switch.h"
#include "support/HangingThreads.h"

#include <QDir>
#include <QDropEvent>
#include <QMessageBox>
#include <QMimeData>
#include <QSignalSpy>
#include <QUrl>

namespace ostrelle {

using namespace Qt::StringLiterals;

namespace {

class PanelActionsTest : public MenuContentViewTest {
protected:
    /// Drags the files onto the panel and drops them if it accepts them. Returns whether it did.
    bool drop(const QStringList& paths, Qt::DropActions offered = Qt::CopyAction | Qt::MoveAction) {
        QMimeData data;
        QList<QUrl> urls;
        for (const QString& path : paths) {
            urls.append(QUrl::fromLocalFile(path));
        }
        data.setUrls(urls);
        QDragEnterEvent enter(QPoint(200, 200), offered, &data, Qt::LeftButton, Qt::NoModifier);
        enter.ignore();
        QApplication::sendEvent(view.get(), &enter);
        words = find(u"dropNotice"_s)->accessibleName();
        EXPECT_TRUE(isShown(u"dropNotice"_s));
        QDragMoveEvent move(QPoint(200, 201), offered, &data, Qt::LeftButton, Qt::NoModifier);
        move.ignore();
        QApplication::sendEvent(view.get(), &move);
        QDropEvent event(QPointF(200, 200), offered, &data, Qt::LeftButton, Qt::NoModifier);
        event.ignore();
        if (move.isAccepted()) {
            QApplication::sendEvent(view.get(), &event);
        } else {
            QDragLeaveEvent leave;
            QApplication::sendEvent(view.get(), &leave);
        }
        EXPECT_EQ(move.isAccepted(), event.isAccepted());
        EXPECT_TRUE(!event.isAccepted() || event.dropAction() == Qt::CopyAction);
        await(view->finished());
        EXPECT_FALSE(isShown(u"dropNotice"_s));
        return event.isAccepted();
    }

    QString words; ///< while the files were dragged
};

} // namespace

TEST_F(PanelActionsTest, WhatIsMissingIsAskedForAndNothingBegins) {
    const QSignalSpy downloads(&world.events, &AppEvents::triggerManualFTPDownload);
    world.alerts.answer = 1; // would confirm, if it got that far
    configure(true, true, false);
    for (const SourceType source : {SourceType::local, SourceType::ftp}) {
        world.settings.setSourceType(source);
        for (const QString& button : {u"selectImages"_s, u"captionAll"_s, u"autoMode"_s}) {
            world.alerts.shown.clear();
            click(button);
            ASSERT_EQ(world.alerts.shown.size(), 1) << button.toStdString();
            EXPECT_TRUE(
                world.alerts.shown.first().text.contains(u"select a Code Replacements File before"_s));
        }
    }
    EXPECT_TRUE(world.files.asked.isEmpty() && downloads.isEmpty());
    EXPECT_FALSE(world.status.lastMessage());
    EXPECT_FALSE(world.settings.autoMode() || find<Switch>(u"autoMode"_s)->isChecked());
}

TEST_F(PanelActionsTest, AutoModeGoesOnWhenAllIsThereAndOffWithoutAnything) {
    touch(u"code_replacements.txt"_s); // in the watch folder: that is enough
    for (const bool isOn : {true, false}) {
        configure(isOn, isOn, false);
        click(u"autoMode"_s);
        EXPECT_EQ(world.settings.autoMode(), isOn);
        EXPECT_EQ(find<Switch>(u"autoMode"_s)->isChecked(), isOn);
    }
    EXPECT_TRUE(world.alerts.shown.isEmpty());
}

TEST_F(PanelActionsTest, WhileOneQuestionIsOpenNoOtherIsBegun) {
    configure(true, true, false);
    HangingThreads share(world.threads.of(world.folder.path())); // the folder is checked first
    for (const QString& name : {u"selectImages"_s, u"selectImages"_s, u"captionAll"_s, u"autoMode"_s}) {
        QTest::mouseClick(find(name), Qt::LeftButton);
    }
    auto closing = std::make_unique<MenuContentView>(world.parts);
    QTest::mouseClick(closing->findChild<ActionButton*>(u"selectImages"_s), Qt::LeftButton);
    QCoro::Task<> finished = closing->finished();
    closing.reset();
    EXPECT_TRUE(world.alerts.shown.isEmpty());
    share.recover();
    await(view->finished());
    await(std::move(finished));
    EXPECT_EQ(world.alerts.shown.size(), 1) << "a closed panel asks nothing";
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

TEST_F(PanelActionsTest, ImagesWithoutACaptionCanBeChosenFromAll) {
    configure(true, true, true);
    const QByteArray caption = "<x:xmpmeta xmlns:x='adobe:ns:meta/'><rdf:RDF "
                               "xmlns:rdf='http://www.w3.org/1999/02/22-rdf-syntax-ns#'><rdf:Description "
                               "xmlns:dc='http://purl.org/dc/elements/1.1/'><dc:description><rdf:Alt><rdf:li "
                               "xml:lang='x-default'>Typed by hand</rdf:li></rdf:Alt></dc:description>"
                               "</rdf:Description></rdf:RDF></x:xmpmeta>";
    touch(u"a.cr3"_s);
    writeFile(world.folder.filePath(u"a.xmp"_s), caption);
    touch(u"b.cr3"_s);
    world.alerts.answer = 2;
    click(u"captionAll"_s);
    EXPECT_TRUE(
        world.alerts.shown.first().text.endsWith(u"2 images; 1 has a caption that will be replaced."_s));
    EXPECT_EQ(world.status.lastMessage(), u"Done. Processed: 0, Failed: 1."_s) << "no model answers";
    EXPECT_EQ(contentsOf(world.folder.filePath(u"a.xmp"_s)), caption);

    QStringList dropped;
    for (const QString& name : {u"a.cr3"_s, u"a.xmp"_s, u"b.cr3"_s, u"b.xmp"_s}) {
        dropped.append(world.folder.filePath(name));
    }
    EXPECT_TRUE(drop(dropped));
    EXPECT_EQ(world.alerts.shown.last().text, u"2 images; 1 has a caption that will be replaced."_s);
    EXPECT_EQ(world.status.lastMessage(), u"Failed to caption 1 image"_s);
    world.status.setLastMessage(std::nullopt);
    world.alerts.answer = 0;
    EXPECT_TRUE(drop(dropped));
    EXPECT_EQ(world.status.lastMessage(), std::nullopt) << "cancelled";
    EXPECT_EQ(contentsOf(world.folder.filePath(u"a.xmp"_s)), caption);
}

TEST_F(PanelActionsTest, ASelectionBeginsInTheFolderAndGoesOnByItsOwnRules) {
    configure(true, true, true);
    click(u"selectImages"_s); // the user cancels
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

    for (const QString& files : {u"/p/a.xmp"_s, u"/p/a.wav"_s, u"/p /p"_s, u"/p/a.txt /p/b.txt"_s}) {
        EXPECT_FALSE(drop(files.split(u' ', Qt::SkipEmptyParts))) << files.toStdString();
        EXPECT_TRUE(words.startsWith(u"Only images")) << words.toStdString();
    }
    EXPECT_TRUE(drop({u"/p/a.jpg"_s, u"/p/a.wav"_s}));
    EXPECT_EQ(words, u"Caption 1 image");
    EXPECT_TRUE(drop({u"/p/a.jpg"_s, u"/p/a.pdf"_s}));
    EXPECT_EQ(words, u"Caption 1 image\nLeft out: a.pdf");
    EXPECT_FALSE(drop({u"/photos/a.jpg"_s}, Qt::MoveAction)) << "files are never moved";
    EXPECT_TRUE(drop({touch(u"plan.pdf"_s)})) << "a folder may have any name";
    EXPECT_EQ(world.alerts.shown.last().title, u"File Not Used"_s);
    EXPECT_EQ(world.settings.destinationFolder(), folder);
    {
        QMessageBox question;
        question.open();
        EXPECT_FALSE(drop({folder}) || drop({u"/photos/a.jpg"_s})) << "the open question comes first";
    }
    world.status.setIsProcessing(true);
    EXPECT_FALSE(drop({u"/photos/a.jpg"_s})) << "no second run";
    const QString odd = world.folder.filePath(u"Game.txt"_s);
    EXPECT_TRUE(QDir().mkdir(odd));
    EXPECT_TRUE(drop({odd}));
    EXPECT_EQ(world.settings.destinationFolder(), odd);
}

} // namespace ostrelle
