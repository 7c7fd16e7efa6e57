// SPDX-License-Identifier: GPL-3.0-or-later
#include "shell/AppDelegate.h"

#include "shell/ShellFixture.h"
#include "support/Await.h"

#include <gtest/gtest.h>

#include <QAction>
#include <QApplication>
#include <QMenuBar>
#include <QTest>

namespace ostrelle {

using namespace Qt::StringLiterals;

namespace {

class NoSource : public RemoteSource {
public:
    void start() override {}
    void stop() override {}
};

class AppDelegateTest : public testing::Test {
protected:
    void start(bool hasCompletedOnboarding = true) {
        world.defaults.set(u"hasCompletedOnboarding"_s, hasCompletedOnboarding);
        delegate.applicationDidFinishLaunching();
    }
    ~AppDelegateTest() override { await(delegate.finished()); }

    /// The titles of the windows that are to be seen.
    static QStringList titles() {
        QStringList titles;
        const QWidgetList windows = QApplication::topLevelWidgets();
        for (const QWidget* window : windows) {
            if (window->isVisible()) {
                titles.append(window->windowTitle());
            }
        }
        titles.sort();
        return titles;
    }
    static QWidget* window(const QString& title) {
        const QWidgetList windows = QApplication::topLevelWidgets();
        for (QWidget* window : windows) {
            if (window->windowTitle() == title) {
                return window;
            }
        }
        return nullptr;
    }

    ShellWorld world;
    ProcessingTracker tracker{world.clock};
    NoSource remote;
    LocalFolderScan scan{{.settings = world.settings,
                          .manifest = world.manifest,
                          .tracker = tracker,
                          .access = world.access,
                          .turns = world.turns,
                          .threads = world.threads,
                          .clock = world.clock,
                          .log = world.console,
                          .captioning = [this](QString file) { return world.analyzer.captionInTurn(file); }}};
    AutoModeController autoMode{{.settings = world.settings,
                                 .status = world.status,
                                 .defaults = world.defaults,
                                 .scan = scan,
                                 .remote = remote,
                                 .notifications = world.notifications,
                                 .threads = world.threads,
                                 .clock = world.clock,
                                 .log = world.console}};
    int quits = 0;
    AppDelegate delegate{world.parts, autoMode, [this] { ++quits; }};
};

} // namespace

TEST_F(AppDelegateTest, TheFirstStartShowsTheTourAndLaterOnesThePanel) {
    start(false);
    EXPECT_EQ(titles(), QStringList{u"Welcome to Ostrelle Captions"_s});
    Q_EMIT world.events.showMainWindow();
    EXPECT_TRUE(titles().contains(u"Ostrelle Captions"_s));
}

TEST_F(AppDelegateTest, AWindowIsMadeOnceAndOnlyHidden) {
    start();
    EXPECT_EQ(titles(), QStringList{u"Ostrelle Captions"_s});
    Q_EMIT world.events.showSettingsWindow();
    QWidget* settings = window(u"Settings"_s);
    ASSERT_TRUE(settings);
    settings->resize(700, 650);
    settings->close();
    EXPECT_EQ(titles(), QStringList{u"Ostrelle Captions"_s});
    Q_EMIT world.events.showSettingsWindow();
    EXPECT_EQ(window(u"Settings"_s), settings);
    EXPECT_EQ(settings->size(), QSize(700, 575));
    for (const auto& [show, title] :
         {std::pair(&AppEvents::showAboutWindow, u"About Ostrelle Captions"_s),
          std::pair(&AppEvents::showHelpWindow, u"Help - IPTC Preset Guide"_s),
          std::pair(&AppEvents::showOnboardingWindow, u"Welcome to Ostrelle Captions"_s)}) {
        Q_EMIT(world.events.*show)();
        EXPECT_TRUE(titles().contains(title)) << title.toStdString();
    }
}

TEST_F(AppDelegateTest, ClosingThePanelQuitsOrAsksWhatIsToBecomeOfTheWork) {
    start();
    delegate.mainWindow()->close();
    EXPECT_EQ(quits, 1);
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
        EXPECT_EQ(quits, row.quits);
        EXPECT_EQ(delegate.mainWindow()->isMinimized(), row.isMinimized);
        EXPECT_EQ(world.alerts.shown.last().title, u"Captioning is still going on"_s);
    }
    EXPECT_TRUE(world.defaults.get<QByteArray>(u"MainWindow"_s));
}

TEST_F(AppDelegateTest, AutoModeThatWasLeftOnStartsBehindTheTour) {
    world.defaults.set(u"OPENAI_API_KEY"_s, u"key"_s);
    world.settings.setIngestFolder(world.folder.path());
    world.settings.setCodeReplacementsFile(world.folder.filePath(u"roster.txt"_s));
    world.settings.setAutoMode(true);
    start(false);
    world.clock.advance(std::chrono::milliseconds(500));
    waitUntil([this] { return world.status.nextScanCountdown().has_value(); });
    EXPECT_TRUE(world.status.lastMessage().value_or(QString()).startsWith(u"Auto mode: Watching"_s));
    scan.stop();
    await(scan.finished());
}

} // namespace ostrelle
