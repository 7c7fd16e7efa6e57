// SPDX-License-Identifier: GPL-3.0-or-later
#include "shell/ShellFixture.h"
#include "shell/help/AboutView.h"
#include "shell/help/HelpView.h"
#include "shell/help/IptcField.h"
#include "shell/toolkit/Illustration.h"
#include "support/FileInFolder.h"

#include <gtest/gtest.h>

#include <QAbstractButton>
#include <QLabel>
#include <QScrollArea>
#include <QScrollBar>
#include <QTest>

namespace ostrelle {

using namespace Qt::StringLiterals;

namespace {

QStringList wordsOf(const QWidget& view) {
    QStringList words;
    for (const auto* label : view.findChildren<QLabel*>()) {
        words.append(label->text());
    }
    return words;
}

} // namespace

TEST(HelpViewTest, ShowsThePresetAndEachFieldWithItsSign) {
    const HelpView help;
    for (const IptcField& field : iptcFields()) {
        EXPECT_TRUE(wordsOf(help).contains(field.name)) << field.name.toStdString();
    }
    const auto pictures = help.findChildren<Illustration*>();
    EXPECT_EQ(pictures.size(), std::ssize(iptcFields()) + 1);
    for (const Illustration* picture : pictures) {
        EXPECT_FALSE(picture->isMissing());
    }
}

TEST(HelpViewTest, WordsStandInForAPictureThatIsMissingOrBroken) {
    const FileInFolder broken(u"broken.svg"_s, "<svg width=\"40\" height=\"30\"><rect"); // after a bad build
    for (const QString& path : {u":/nowhere.svg"_s, broken.path()}) {
        const HelpView help(path);
        EXPECT_FALSE(help.findChild<Illustration*>(u"presetPicture"_s)) << path.toStdString();
        const QStringList words = wordsOf(help);
        EXPECT_TRUE(words.contains(u"Image not found"_s)) << path.toStdString();
        EXPECT_TRUE(words.contains(
            u"Make sure the image is added to:\nAssets.xcassets/PhotoMechanicScreenshot.imageset/"_s));
    }
}

TEST(HelpViewTest, KeysScrollAndCloseAWindowThatIsTooLow) {
    HelpView help;
    help.resize(900, 400);
    help.show();
    help.activateWindow();
    help.setFocus();
    const auto* scroll = help.findChild<QScrollArea*>();
    EXPECT_LE(scroll->widget()->minimumSizeHint().width(), 900) << "nothing is cut off at the usual width";
    ASSERT_GT(scroll->verticalScrollBar()->maximum(), 0);
    QTest::keyClick(help.focusWidget(), Qt::Key_PageDown);
    EXPECT_GT(scroll->verticalScrollBar()->value(), 0);
    QTest::keyClick(help.focusWidget(), Qt::Key_Escape);
    EXPECT_FALSE(help.isVisible());
}

TEST(AboutViewTest, TellsTheVersionAndLeadsToTheWebPages) {
    ShellWorld world;
    QCoreApplication::setApplicationVersion(u"7.8.9"_s);
    const WebPages pages{.product = QUrl(u"https://a.example"_s), .feedback = QUrl(u"https://b.example"_s)};
    AboutView about(world.workspace, pages);
    about.show();
    EXPECT_EQ(about.findChild<QLabel*>(u"version"_s)->text(), u"Version 7.8.9"_s);
    QTest::mouseClick(about.findChild<QWidget*>(u"learnMore"_s), Qt::LeftButton);
    auto* feedback = about.findChild<QWidget*>(u"aboutSendFeedback"_s);
    feedback->setFocus();
    QTest::keyClick(feedback, Qt::Key_Return);
    EXPECT_EQ(world.workspace.links, QList<QUrl>({pages.product, pages.feedback}));
    EXPECT_TRUE(about.isVisible());
    QTest::keyClick(&about, Qt::Key_Escape);
    EXPECT_FALSE(about.isVisible());
    const AboutView without(world.workspace, {});
    EXPECT_TRUE(without.findChildren<QAbstractButton*>().isEmpty()) << "no button leads nowhere";
}

} // namespace ostrelle
