// SPDX-License-Identifier: GPL-3.0-or-later
#include "shell/AppDelegate.h"

#include "shell/ProgramWorld.h"

#include <gtest/gtest.h>

#include <QKeyEvent>
#include <QMenu>
#include <QMenuBar>
#include <QScreen>
#include <QTest>
#include <QToolBar>
#include <chrono>

namespace ostrelle {

using namespace Qt::StringLiterals;

namespace {

class AppDelegateTest : public testing::Test {
protected:
    bool isShown(const QString& title) const {
        const QWidget* window = world.window(title);
        return window != nullptr && window->isVisible();
    }

    ProgramWorld world;
    AppDelegate& delegate = world.delegate;
};

} // namespace

TEST_F(AppDelegateTest, TheFirstStartShowsTheTourAndLaterOnesThePanel) {
    world.start(false);
    EXPECT_TRUE(isShown(u"Welcome to Ostrelle Captions"_s));
    EXPECT_FALSE(isShown(u"Ostrelle Captions"_s));
    Q_EMIT world.events.showMainWindow();
    EXPECT_TRUE(isShown(u"Ostrelle Captions"_s));
}

TEST_F(AppDelegateTest, TheMenusKeysWorkDuringTheFirstTour) {
    world.start(false);
    QWidget* tour = world.window(u"Welcome to Ostrelle Captions"_s);
    tour->activateWindow();
    waitUntil([tour] { return tour->isActiveWindow(); });
    QTest::keyClick(tour, Qt::Key_Comma, Qt::ControlModifier);
    EXPECT_TRUE(isShown(u"Settings"_s));
    QTest::keyClick(tour, Qt::Key_F1);
    EXPECT_TRUE(isShown(u"Help - IPTC Preset Guide"_s));
    QTest::keyClick(tour, Qt::Key_Q, Qt::ControlModifier);
    EXPECT_EQ(world.quits, 1);
}

TEST_F(AppDelegateTest, AWindowIsMadeOnceAndOnlyHidden) {
    world.start();
    EXPECT_TRUE(isShown(u"Ostrelle Captions"_s));
    EXPECT_FALSE(isShown(u"Welcome to Ostrelle Captions"_s));
    Q_EMIT world.events.showSettingsWindow();
    QWidget* settings = world.window(u"Settings"_s);
    ASSERT_TRUE(settings);
    settings->resize(700, 650);
    settings->close();
    EXPECT_FALSE(settings->isVisible());
    Q_EMIT world.events.showSettingsWindow();
    EXPECT_EQ(world.window(u"Settings"_s), settings);
    EXPECT_EQ(settings->size(), QSize(700, 575));
    for (const auto& [show, title] :
         {std::pair(&AppEvents::showAboutWindow, u"About Ostrelle Captions"_s),
          std::pair(&AppEvents::showHelpWindow, u"Help - IPTC Preset Guide"_s),
          std::pair(&AppEvents::showOnboardingWindow, u"Welcome to Ostrelle Captions"_s)}) {
        Q_EMIT(world.events.*show)();
        EXPECT_TRUE(isShown(title)) << title.toStdString();
        const QWidget* shown = world.window(title);
        EXPECT_TRUE(shown->screen()->geometry().contains(shown->geometry())) << title.toStdString();
    }
}

TEST_F(AppDelegateTest, ClosingThePanelQuitsOrAsksWhatIsToBecomeOfTheWork) {
    world.start();
    delegate.mainWindow()->close();
    EXPECT_EQ(world.quits, 1);
    const struct {
        int answer;
        int quits;
        bool isMinimized;
    } rows[] = {{2, 1, false}, {0, 1, true}, {1, 2, true}};
    world.status.setIsProcessing(true);
    for (const auto& row : rows) {
        world.alerts.answer = row.answer;
        delegate.mainWindow()->close();
        await(delegate.finished());
        EXPECT_EQ(world.quits, row.quits);
        EXPECT_EQ(delegate.mainWindow()->isMinimized(), row.isMinimized);
        EXPECT_EQ(world.alerts.shown.last().title, u"Captioning is still going on"_s);
    }
    EXPECT_TRUE(world.defaults.get<QByteArray>(u"MainWindow"_s));
}

TEST_F(AppDelegateTest, WithATrayClosingHidesThePanelWhileAutoModeIsOnAndSaysSoOnce) {
    world.isTrayThere = true;
    world.start();
    world.settings.setAutoMode(true);
    for (int time = 0; time < 2; ++time) {
        delegate.mainWindow()->close();
        await(delegate.finished());
        EXPECT_FALSE(delegate.mainWindow()->isVisible());
        EXPECT_EQ(world.alerts.shown.size() + world.notificationCenter.posted.size(), 1);
        Q_EMIT world.events.showSettingsWindow();
        world.window(u"Settings"_s)->close();
        QApplication::processEvents();
        EXPECT_FALSE(delegate.mainWindow()->isVisible())
            << "a window closed elsewhere does not bring it back";
        delegate.applicationShouldHandleReopen({.wish = StartRequest::Wish::switchAutoMode});
        EXPECT_FALSE(world.settings.autoMode());
        EXPECT_FALSE(delegate.mainWindow()->isVisible());
        delegate.applicationShouldHandleReopen();
        EXPECT_TRUE(delegate.mainWindow()->isVisible());
        world.settings.setAutoMode(true);
    }
    EXPECT_EQ(world.quits, 0);
    world.isTrayThere = false;
    world.settings.setAutoMode(false);
    delegate.mainWindow()->close();
    EXPECT_EQ(world.quits, 1);
}

TEST_F(AppDelegateTest, WithoutAnAddressUpdatesAreSaidToComeWithTheSystem) {
    world.start();
    const QList<QAction*> menus = delegate.mainWindow()->menuBar()->actions();
    for (const QAction* menu : menus) {
        const QList<QAction*> items = menu->menu()->actions();
        for (QAction* item : items) {
            if (item->text().contains(u"Updates")) {
                item->trigger();
            }
        }
    }
    await(delegate.finished());
    EXPECT_EQ(world.alerts.titles(), QStringList(u"Updates Come With Your System"_s));
}

TEST_F(AppDelegateTest, AHiddenStartShowsNoWindowWhereTheTrayLeadsBackToIt) {
    world.isTrayThere = true;
    world.defaults.set(u"hasCompletedOnboarding"_s, true);
    delegate.applicationDidFinishLaunching({.wish = StartRequest::Wish::hide});
    EXPECT_FALSE(delegate.mainWindow()->isVisible());
    delegate.applicationShouldHandleReopen({.wish = StartRequest::Wish::hide});
    EXPECT_FALSE(delegate.mainWindow()->isVisible());
    delegate.applicationShouldHandleReopen();
    EXPECT_TRUE(delegate.mainWindow()->isVisible());
}

TEST_F(AppDelegateTest, ATrayThatComesAfterTheLoginTakesTheMinimisedWindow) {
    world.defaults.set(u"hasCompletedOnboarding"_s, true);
    delegate.applicationDidFinishLaunching({.wish = StartRequest::Wish::hide});
    EXPECT_TRUE(delegate.mainWindow()->isMinimized());
    world.isTrayThere = true;
    world.clock.advance(std::chrono::seconds(3));
    EXPECT_FALSE(delegate.mainWindow()->isVisible());
}

TEST_F(AppDelegateTest, TheSignsBesideTheMenusAreThoseOfTheirItems) {
    world.start();
    const auto* bar = delegate.mainWindow()->findChild<QToolBar*>(u"MainToolbar"_s);
    ASSERT_TRUE(bar);
    EXPECT_EQ(bar->toolButtonStyle(), Qt::ToolButtonIconOnly);
    const QStringList windows = {u"Settings"_s, u"Help - IPTC Preset Guide"_s};
    ASSERT_EQ(bar->actions().size(), windows.size());
    for (int index = 0; index < windows.size(); ++index) {
        QWidget* button = bar->widgetForAction(bar->actions().at(index));
        EXPECT_TRUE(button->isVisible());
        QTest::mouseClick(button, Qt::LeftButton);
        EXPECT_TRUE(isShown(windows.at(index))) << windows.at(index).toStdString();
    }
}

TEST_F(AppDelegateTest, TheHiddenShortcutIsToldAndGoesNoFurther) {
    world.start();
    int told = 0;
    QObject::connect(&world.events, &AppEvents::showAnalyticsWindow, [&told] { ++told; });
    constexpr Qt::KeyboardModifiers both = Qt::ControlModifier | Qt::ShiftModifier;
    QTest::keyClick(delegate.mainWindow(), Qt::Key_D, both);
    EXPECT_EQ(told, 1);

    constexpr quint32 keyRightOfS = 40; // D on an English keyboard
    const struct {
        int key;
        quint32 scanCode;
        Qt::KeyboardModifiers modifiers;
        bool isSwallowed;
    } rows[] = {
        {Qt::Key_D, 0, both, true},
        {Qt::Key_D, 0, both | Qt::AltModifier, true},
        {Qt::Key_E, keyRightOfS, both, true}, // on a Dvorak keyboard
        {Qt::Key_D, keyRightOfS, Qt::ControlModifier, false},
        {Qt::Key_D, keyRightOfS, Qt::ShiftModifier, false},
        {Qt::Key_E, 0, both, false},
    };
    DashboardShortcut shortcut;
    for (const auto& row : rows) {
        QKeyEvent event(QEvent::KeyPress, row.key, row.modifiers, row.scanCode, 0, 0);
        EXPECT_EQ(shortcut.eventFilter(&shortcut, &event), row.isSwallowed) << row.key << ' ' << row.scanCode;
    }
}

TEST_F(AppDelegateTest, AutoModeThatWasLeftOnStartsBehindTheTour) {
    world.defaults.set(u"OPENAI_API_KEY"_s, u"key"_s);
    world.settings.setIngestFolder(world.folder.path());
    world.settings.setCodeReplacementsFile(world.folder.filePath(u"roster.txt"_s));
    world.settings.setAutoMode(true);
    world.start(false);
    world.clock.advance(std::chrono::milliseconds(500));
    waitUntil([this] { return world.status.nextScanCountdown().has_value(); });
    EXPECT_TRUE(world.status.lastMessage().value_or(QString()).startsWith(u"Auto mode: Watching"_s));
    world.program.scan.stop();
    await(world.program.scan.finished());
}

} // namespace ostrelle
