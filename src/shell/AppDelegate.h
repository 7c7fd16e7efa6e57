// SPDX-License-Identifier: GPL-3.0-or-later
#pragma once

#include "core/TaskGroup.h"
#include "shell/desktop/DashboardShortcut.h"
#include "shell/panel/ShellParts.h"
#include "transfer/AutoModeController.h"

#include <QMainWindow>
#include <QObject>
#include <functional>
#include <memory>

namespace ostrelle {

class AboutView;
class HelpView;
class MenuContentView;
class OnboardingView;
class SettingsView;

/// Owns the windows and answers the in-process notifications that ask for one. A window is made when it is
/// first asked for; closing only hides it, but for the main one, which ends the program.
class AppDelegate : public QObject {
    Q_OBJECT

public:
    /// `quit` ends the program once the images in the works are finished.
    AppDelegate(ShellParts parts, AutoModeController& autoMode, std::function<void()> quit);
    ~AppDelegate() override;

    /// The start of the program: its windows, the permission for notifications, and auto mode, which follows
    /// the settings from now on.
    void applicationDidFinishLaunching();
    /// The program was started once more.
    void applicationShouldHandleReopen();
    /// The program ends, whoever has asked for it: the window's place is kept.
    void applicationWillTerminate();
    /// Ends the program, after a question if it is at work.
    void quit();
    /// Resumes when nothing is left that the windows began.
    QCoro::Task<> finished() const;

    void showMainWindow();
    void showAboutWindow();
    void showSettingsWindow();
    void showHelpWindow();
    void showOnboardingWindow();

    QMainWindow* mainWindow() const { return m_mainWindow.get(); }

    bool eventFilter(QObject* watched, QEvent* event) override;

private:
    void makeMainWindow();
    void addMenus();
    void addToolBar(const QList<QAction*>& actions);
    void observeEvents();
    void restorePlace();
    bool isAtWork() const;
    QCoro::Task<> askAndQuit();

    ShellParts m_parts;
    AutoModeController& m_autoMode;
    std::function<void()> m_quit;
    TaskGroup m_tasks;
    DashboardShortcut m_dashboardShortcut;
    bool m_isAsking = false;
    std::unique_ptr<QMainWindow> m_mainWindow;
    QList<QAction*> m_shortcuts;        ///< the main window's items that have one for all windows
    MenuContentView* m_panel = nullptr; ///< the main window's
    std::unique_ptr<AboutView> m_aboutWindow;
    std::unique_ptr<SettingsView> m_settingsWindow;
    std::unique_ptr<OnboardingView> m_onboardingWindow;
    std::unique_ptr<HelpView> m_helpWindow;
};

} // namespace ostrelle
