// SPDX-License-Identifier: GPL-3.0-or-later
#include "shell/tour/OnboardingView.h"

#include "shell/ShellFixture.h"
#include "support/Await.h"

#include <gtest/gtest.h>

#include <QAbstractButton>
#include <QLabel>
#include <QSignalSpy>
#include <QTest>

namespace ostrelle {

using namespace Qt::StringLiterals;

namespace {

const QString completedKey = u"hasCompletedOnboarding"_s;
constexpr int lastStep = 6;

class OnboardingViewTest : public testing::Test {
protected:
    OnboardingViewTest() {
        tour.resize(600, 500);
        tour.show();
        tour.activateWindow();
    }
    ~OnboardingViewTest() override { await(tour.finished()); }

    QAbstractButton* button(const QString& name) {
        auto* found = tour.findChild<QAbstractButton*>(name);
        EXPECT_TRUE(found) << name.toStdString();
        return found;
    }
    void click(const QString& name) {
        QTest::mouseClick(button(name), Qt::LeftButton);
        await(tour.finished());
    }
    /// A key goes where the user's would: to what has the focus.
    void press(Qt::Key key) {
        QWidget* focused = tour.focusWidget();
        QTest::keyClick(focused != nullptr ? focused : &tour, key);
    }
    void goTo(int step) {
        while (tour.currentStep() < step) {
            press(Qt::Key_Right);
        }
        QCoreApplication::processEvents(); // lays the page out, by which arrow keys find their neighbours
    }
    QStringList wordsInSight() {
        QStringList words;
        for (const auto* label : tour.findChildren<QLabel*>()) {
            if (label->isVisible()) {
                words.append(label->text());
            }
        }
        return words;
    }

    ShellWorld world;
    OnboardingView tour{world.parts};
};

} // namespace

TEST_F(OnboardingViewTest, ButtonsLeadFromTheFirstPageToTheLastAndBack) {
    EXPECT_FALSE(button(u"back"_s)->isVisible());
    EXPECT_TRUE(wordsInSight().contains(u"Welcome to Ostrelle Captions"_s));
    for (int step = 1; step <= lastStep; ++step) {
        click(u"next"_s);
        EXPECT_EQ(tour.currentStep(), step);
        EXPECT_TRUE(button(u"back"_s)->isVisible());
        EXPECT_EQ(button(u"getStarted"_s)->isVisible(), step == lastStep);
        EXPECT_EQ(button(u"next"_s)->isVisible(), step != lastStep);
    }
    EXPECT_TRUE(wordsInSight().contains(u"For Best Results:\nInclude IPTC Metadata"_s));
    click(u"back"_s);
    EXPECT_EQ(tour.currentStep(), lastStep - 1);
    EXPECT_TRUE(button(u"next"_s)->isVisible());
    EXPECT_FALSE(world.defaults.exists(completedKey));
}

TEST_F(OnboardingViewTest, KeysTurnThePagesAndStopAtBothEnds) {
    press(Qt::Key_Left);
    EXPECT_EQ(tour.currentStep(), 0);
    press(Qt::Key_Return);
    press(Qt::Key_Enter);
    EXPECT_EQ(tour.currentStep(), 2);
    press(Qt::Key_Left);
    EXPECT_EQ(tour.currentStep(), 1);
    goTo(lastStep);
    press(Qt::Key_Right);
    EXPECT_EQ(tour.currentStep(), lastStep);
    EXPECT_TRUE(tour.isVisible()) << "only an answer to \"Get Started\" ends the tour";
}

TEST_F(OnboardingViewTest, ArrowsTurnPagesAndEnterPressesTheButtonThatHasTheFocus) {
    goTo(2);
    button(u"back"_s)->setFocus(Qt::TabFocusReason);
    press(Qt::Key_Right);
    EXPECT_EQ(tour.currentStep(), 3);
    EXPECT_EQ(tour.focusWidget(), button(u"back"_s));
    press(Qt::Key_Return);
    EXPECT_EQ(tour.currentStep(), 2);
}

TEST_F(OnboardingViewTest, KeysStillWorkWhenThePageOfTheFocusIsLeft) {
    goTo(1);
    button(u"onboardingWatchFolderChoose"_s)->setFocus(Qt::TabFocusReason);
    press(Qt::Key_Right);
    press(Qt::Key_Right);
    EXPECT_EQ(tour.currentStep(), 3);
}

TEST_F(OnboardingViewTest, GetStartedKeepsThatTheTourWasDoneAndAsksForTheMainWindow) {
    QSignalSpy shown(&world.events, &AppEvents::showMainWindow);
    bool wasKept = false;
    QObject::connect(&world.events, &AppEvents::showMainWindow, &tour,
                     [&] { wasKept = world.defaults.get<bool>(completedKey) == true && !tour.isVisible(); });
    goTo(lastStep);
    press(Qt::Key_Return);
    EXPECT_EQ(shown.count(), 1);
    EXPECT_TRUE(wasKept);
    EXPECT_FALSE(tour.isVisible());
}

TEST_F(OnboardingViewTest, ShownAgainItBeginsAgainAndForgetsNothing) {
    goTo(lastStep);
    click(u"getStarted"_s);
    tour.show();
    EXPECT_EQ(tour.currentStep(), 0);
    EXPECT_FALSE(button(u"back"_s)->isVisible());
    EXPECT_EQ(world.defaults.get<bool>(completedKey), true);
}

TEST_F(OnboardingViewTest, ClosedBeforeItsEndItIsNotDone) {
    goTo(3);
    tour.close();
    EXPECT_FALSE(world.defaults.exists(completedKey));
    tour.show();
    EXPECT_EQ(tour.currentStep(), 0);
}

TEST_F(OnboardingViewTest, TheLastPageLeadsToTheHelpGuideAndStays) {
    QSignalSpy help(&world.events, &AppEvents::showHelpWindow);
    goTo(lastStep);
    click(u"viewHelpGuide"_s);
    EXPECT_EQ(help.count(), 1);
    EXPECT_TRUE(tour.isVisible());
}

TEST_F(OnboardingViewTest, AFolderAndARosterAreChosenWhereTheTourTellsOfThem) {
    const QString folder = world.folder.filePath(u"2026-10-24 Home Game"_s);
    goTo(1);
    world.files.answer = {folder};
    click(u"onboardingWatchFolderChoose"_s);
    EXPECT_EQ(world.settings.ingestFolder(), folder);
    EXPECT_TRUE(wordsInSight().contains(u"2026-10-24 Home Game"_s));

    goTo(2);
    world.files.answer = {};
    click(u"onboardingCodeReplacementsChoose"_s);
    EXPECT_FALSE(world.settings.codeReplacementsFile());
    world.files.answer = {folder + u"/roster.txt"_s};
    click(u"onboardingCodeReplacementsChoose"_s);
    EXPECT_EQ(world.settings.codeReplacementsFile(), folder + u"/roster.txt"_s);
    EXPECT_TRUE(wordsInSight().contains(u"roster.txt"_s));
}

TEST_F(OnboardingViewTest, AStyleIsChosenWithArrowsWithoutLeavingThePage) {
    world.settings.setCaptionStyle(CaptionStyle::gettySports);
    goTo(3);
    EXPECT_TRUE(button(u"onboardingStyle1"_s)->isChecked());
    button(u"onboardingStyle1"_s)->setFocus(Qt::TabFocusReason);
    press(Qt::Key_Right);
    EXPECT_EQ(world.settings.captionStyle(), CaptionStyle::imagnImages);
    EXPECT_EQ(tour.currentStep(), 3);
    press(Qt::Key_Return);
    EXPECT_EQ(tour.currentStep(), 4);
}

TEST_F(OnboardingViewTest, NoWordsAreCutOnAnyPage) {
    for (int step = 0; step <= lastStep; ++step) {
        goTo(step);
        for (const auto* label : tour.findChildren<QLabel*>()) {
            if (label->isVisible() && label->wordWrap()) {
                EXPECT_GE(label->height(), label->heightForWidth(label->width()))
                    << qPrintable(label->text());
            }
        }
    }
}

} // namespace ostrelle
