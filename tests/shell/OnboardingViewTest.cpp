// SPDX-License-Identifier: GPL-3.0-or-later
#include "shell/tour/OnboardingView.h"

#include "shell/ViewTest.h"
#include "shell/toolkit/Illustration.h"

#include <QAbstractButton>
#include <QSignalSpy>

namespace ostrelle {

using namespace Qt::StringLiterals;

namespace {

const QString completedKey = u"hasCompletedOnboarding"_s;
constexpr int lastStep = 7;

class OnboardingViewTest : public ViewTest<OnboardingView> {
protected:
    OnboardingViewTest() : ViewTest(QSize(600, 500)) {}

    /// Presses a key as a user would: in the widget that has the focus.
    void press(Qt::Key key) {
        QWidget* focused = tour.focusWidget();
        QTest::keyClick(focused != nullptr ? focused : &tour, key);
    }
    void goTo(int step) {
        while (tour.currentStep() < step) {
            press(Qt::Key_Right);
        }
        QCoreApplication::processEvents(); // lays the page out: arrow keys go by position
    }
    void focus(const QString& name) { find(name)->setFocus(Qt::TabFocusReason); }
    template <typename Widget = QLabel>
    QList<Widget*> inSight() {
        QList<Widget*> widgets = tour.findChildren<Widget*>();
        widgets.removeIf([](const Widget* widget) { return !widget->isVisible(); });
        return widgets;
    }
    bool isInSight(const QString& words) {
        const QList<QLabel*> labels = inSight();
        return std::any_of(labels.begin(), labels.end(),
                           [&words](const QLabel* label) { return label->text() == words; });
    }

    void expectNoWordsCut() {
        QCoreApplication::processEvents(); // lays the page out
        for (const auto* label : inSight()) {
            EXPECT_TRUE(!label->wordWrap() || label->height() >= label->heightForWidth(label->width()))
                << qPrintable(label->text());
        }
    }

    OnboardingView& tour = *view;
};

} // namespace

TEST_F(OnboardingViewTest, ButtonsLeadFromTheFirstPageToTheLastAndBack) {
    EXPECT_FALSE(isShown(u"back"_s));
    EXPECT_TRUE(isInSight(u"Welcome to Ostrelle Captions"_s));
    expectNoWordsCut();
    for (int step = 1; step <= lastStep; ++step) {
        click(u"next"_s);
        EXPECT_EQ(tour.currentStep(), step);
        EXPECT_TRUE(isShown(u"back"_s));
        EXPECT_EQ(isShown(u"getStarted"_s), step == lastStep);
        EXPECT_EQ(isShown(u"next"_s), step != lastStep);
        const QList<Illustration*> pictures = inSight<Illustration>();
        EXPECT_TRUE(pictures.size() == 1 && !pictures.first()->isMissing()) << step;
        expectNoWordsCut();
    }
    EXPECT_TRUE(isInSight(u"For Best Results:\nInclude IPTC Metadata"_s));
    click(u"back"_s);
    EXPECT_EQ(tour.currentStep(), lastStep - 1);
    tour.close();
    EXPECT_FALSE(world.defaults.exists(completedKey)) << "closing the tour early does not complete it";
    tour.show();
    EXPECT_EQ(tour.currentStep(), 0);
}

TEST_F(OnboardingViewTest, KeysTurnThePagesAndStopAtBothEnds) {
    const struct {
        Qt::Key key;
        int step;
    } rows[] = {{Qt::Key_Left, 0}, {Qt::Key_Return, 1}, {Qt::Key_Enter, 2}, {Qt::Key_Left, 1}};
    for (const auto& row : rows) {
        press(row.key);
        EXPECT_EQ(tour.currentStep(), row.step);
    }
    goTo(lastStep);
    press(Qt::Key_Right);
    EXPECT_EQ(tour.currentStep(), lastStep);
    const QSignalSpy help(&world.events, &AppEvents::showHelpWindow);
    click(u"viewHelpGuide"_s);
    EXPECT_EQ(help.count(), 1);
    EXPECT_TRUE(tour.isVisible()) << "only \"Get Started\" ends the tour";
}

TEST_F(OnboardingViewTest, ArrowsTurnPagesAndEnterPressesTheButtonThatHasTheFocus) {
    goTo(3);
    focus(u"back"_s);
    press(Qt::Key_Right);
    EXPECT_EQ(tour.currentStep(), 4);
    EXPECT_EQ(tour.focusWidget(), find(u"back"_s));
    press(Qt::Key_Return);
    EXPECT_EQ(tour.currentStep(), 3);
    focus(u"onboardingCodeReplacementsChoose"_s); // on a page that the next key leaves
    press(Qt::Key_Right);
    press(Qt::Key_Right);
    EXPECT_EQ(tour.currentStep(), 5);
}

TEST_F(OnboardingViewTest, GetStartedKeepsThatTheTourWasDoneAndAsksForTheMainWindow) {
    QList<bool> asked;
    QObject::connect(&world.events, &AppEvents::showMainWindow, &tour,
                     [&] { asked.append(world.defaults.exists(completedKey) && !tour.isVisible()); });
    goTo(lastStep);
    press(Qt::Key_Return);
    EXPECT_EQ(asked, QList<bool>{true}) << "once, after everything else";
    tour.show();
    EXPECT_EQ(tour.currentStep(), 0);
    EXPECT_FALSE(isShown(u"back"_s));
    EXPECT_EQ(world.defaults.get<bool>(completedKey), true);
}

TEST_F(OnboardingViewTest, AFolderAndARosterAreChosenWhereTheTourTellsOfThem) {
    const QString folder = world.folder.filePath(u"2026-10-24 Home Game"_s);
    goTo(1);
    world.files.answer = {folder};
    click(u"onboardingWatchFolderChoose"_s);
    EXPECT_EQ(world.settings.ingestFolder(), folder);
    EXPECT_TRUE(isInSight(u"2026-10-24 Home Game"_s));

    goTo(3);
    world.files.answer = {folder + u"/roster.txt"_s};
    click(u"onboardingCodeReplacementsChoose"_s);
    EXPECT_EQ(world.settings.codeReplacementsFile(), folder + u"/roster.txt"_s);
    EXPECT_TRUE(isInSight(u"roster.txt"_s));
}

TEST_F(OnboardingViewTest, AStyleIsChosenWithArrowsWithoutLeavingThePage) {
    world.settings.setCaptionStyle(CaptionStyle::gettySports);
    goTo(4);
    EXPECT_TRUE(find<QAbstractButton>(u"onboardingStyle1"_s)->isChecked());
    focus(u"onboardingStyle1"_s);
    press(Qt::Key_Right);
    EXPECT_EQ(world.settings.captionStyle(), CaptionStyle::imagnImages);
    EXPECT_EQ(tour.currentStep(), 4);
    press(Qt::Key_Return);
    EXPECT_EQ(tour.currentStep(), 5);
}

TEST_F(OnboardingViewTest, AKeyIsEnteredWithoutLeavingItsPage) {
    goTo(2);
    focus(u"apiKey"_s);
    QTest::keyClicks(tour.focusWidget(), u"sk-typed"_s);
    press(Qt::Key_Return);
    await(view->finished());
    await(world.program.keyCheck.finished());
    EXPECT_EQ(world.defaults.get<QString>(u"OPENAI_API_KEY"_s), u"sk-typed"_s);
    EXPECT_EQ(tour.currentStep(), 2);
    EXPECT_TRUE(isShown(u"onboardingKeyStored"_s));
    EXPECT_FALSE(isShown(u"apiKey"_s));
    EXPECT_TRUE(find<QLabel>(u"keyVerdict"_s)->text().startsWith(u"OpenAI could not be asked"));
    press(Qt::Key_Return);
    EXPECT_EQ(tour.currentStep(), 3) << "the keys turn pages again";
}

} // namespace ostrelle
