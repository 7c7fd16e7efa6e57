// SPDX-License-Identifier: GPL-3.0-or-later
#include "shell/ShellFixture.h"
#include "shell/help/AboutView.h"
#include "shell/help/HelpView.h"
#include "shell/help/IptcField.h"
#include "shell/help/WebPages.h"
#include "shell/toolkit/Illustration.h"
#include "shell/tour/OnboardingSteps.h"

#include <gtest/gtest.h>

#include <QAbstractButton>
#include <QFile>
#include <QLabel>
#include <QScrollArea>
#include <QScrollBar>
#include <QTemporaryDir>
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

/// An SVG that is none, as after a bad build of the resources.
QString brokenDrawing(const QTemporaryDir& folder) {
    QFile file(folder.filePath(u"broken.svg"_s));
    EXPECT_TRUE(file.open(QIODevice::WriteOnly));
    file.write("<svg width=\"40\" height=\"30\"><rect");
    return file.fileName();
}

} // namespace

TEST(HelpViewTest, ShowsThePresetAndEachFieldWithItsNote) {
    HelpView help;
    const auto* picture = help.findChild<Illustration*>(u"presetPicture"_s);
    ASSERT_TRUE(picture);
    EXPECT_FALSE(picture->isMissing());
    const QStringList words = wordsOf(help);
    QStringList names;
    for (const IptcField& field : iptcFields()) {
        names.append(field.name);
        EXPECT_TRUE(words.contains(field.name) && words.contains(field.note)) << field.name.toStdString();
    }
    EXPECT_EQ(names.join(u'|'), u"Date/Time|City|State/Province|Venue/Location|Event|Copyright"_s);
    EXPECT_FALSE(words.contains(u"Image not found"_s));
}

TEST(HelpViewTest, WordsStandInForAPictureThatIsMissingOrBroken) {
    const QTemporaryDir folder;
    for (const QString& path : {u":/nowhere.svg"_s, brokenDrawing(folder)}) {
        HelpView help(path);
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
    ASSERT_GT(scroll->verticalScrollBar()->maximum(), 0);
    QTest::keyClick(help.focusWidget(), Qt::Key_PageDown);
    EXPECT_GT(scroll->verticalScrollBar()->value(), 0);
    QTest::keyClick(help.focusWidget(), Qt::Key_Escape);
    EXPECT_FALSE(help.isVisible());
}

TEST(HelpViewTest, NothingIsCutAtItsUsualWidth) {
    HelpView help;
    EXPECT_LE(help.findChild<QScrollArea*>()->widget()->minimumSizeHint().width(), 900);
}

TEST(IllustrationTest, EachSignThatAViewNamesIsThere) {
    for (const IptcField& field : iptcFields()) {
        const std::unique_ptr<Illustration> sign(Illustration::named(field.icon));
        EXPECT_FALSE(sign->isMissing()) << field.icon.toStdString();
    }
    for (const OnboardingStep& step : onboardingSteps()) {
        const std::unique_ptr<Illustration> sign(Illustration::named(step.icon));
        EXPECT_EQ(sign->isMissing(), step.icon == applicationIconName) << step.icon.toStdString();
    }
}

TEST(AboutViewTest, TellsTheVersionAndLeadsToTheWebPages) {
    ShellWorld world;
    QCoreApplication::setApplicationVersion(u"7.8.9"_s);
    AboutView about(world.workspace);
    about.show();
    EXPECT_EQ(about.findChild<QLabel*>(u"version"_s)->text(), u"Version 7.8.9"_s);
    QTest::mouseClick(about.findChild<QWidget*>(u"learnMore"_s), Qt::LeftButton);
    auto* feedback = about.findChild<QWidget*>(u"aboutSendFeedback"_s);
    feedback->setFocus();
    QTest::keyClick(feedback, Qt::Key_Return);
    EXPECT_EQ(world.workspace.links, QList<QUrl>({web::productPage(), web::feedbackPage()}));
    EXPECT_TRUE(about.isVisible());
    QTest::keyClick(&about, Qt::Key_Escape);
    EXPECT_FALSE(about.isVisible());
}

} // namespace ostrelle
