// SPDX-License-Identifier: GPL-3.0-or-later
#pragma once

#include "core/TaskGroup.h"
#include "product/StartRequest.h"
#include "shell/desktop/DashboardShortcut.h"
#include "shell/desktop/PhotoMechanicMonitoring.h"
#include "shell/help/UpdateNews.h"
#include "shell/panel/ShellParts.h"
#include "transfer/AutoModeController.h"

#include <QCoroTask>
#include <QMainWindow>
#include <QObject>
#include <functional>
#include <memory>

namespace ostrelle {

class AboutView;
class AnalyticsView;
class HelpView;
class MenuContentView;
class OnboardingView;
class SettingsView;
class TrayItem;

/// Owns the windows and answers the in-process notifications that request one. A window is made when first
/// requested. Closing only hides it, except for the main one: that ends the program, unless auto mode goes on
/// and the tray leads back to the window.
class AppDelegate : public QObject {
    Q_OBJECT

public:
    /// `quit` ends the program once the images under way are finished.
    AppDelegate(ShellParts parts, AutoModeController& autoMode, std::function<void()> quit);
    ~AppDelegate() override;

    /// Starts the program: its windows, the permission for notifications, and auto mode, which follows the
    /// settings from now on.
    void applicationDidFinishLaunching(const StartRequest& request = {});
    /// The user has started the program again, or has clicked on one of its notifications. Files are taken as
    /// if they were dropped on the main window.
    void applicationShouldHandleReopen(const StartRequest& request = {});
    /// The program is ending, for whatever reason: saves the window's position.
    void applicationWillTerminate();
    /// Ends the program; asks first if it is working.
    void quit();
    /// Resumes when all tasks started by the windows have ended.
    QCoro::Task<> finished() const;

    void showMainWindow();
    void showAboutWindow();
    void showSettingsWindow();
    void showHelpWindow();
    void showOnboardingWindow();
    void showAnalyticsWindow();

    QMainWindow* mainWindow() const { return m_mainWindow.get(); }

    bool eventFilter(QObject* watched, QEvent* event) override;

private:
    void makeMainWindow();
    void addMenus();
    void addToolBar(const QList<QAction*>& actions);
    void observeEvents();
    void restorePlace();
    void carryOut(const StartRequest& request);
    void closeMainWindow();
    void hideMainWindow();
    QCoro::Task<> tellOfTray();
    bool isAtWork() const;
    QCoro::Task<> askAndQuit();

    ShellParts m_parts;
    AutoModeController& m_autoMode;
    std::function<void()> m_quit;
    TaskGroup m_tasks;
    DashboardShortcut m_dashboardShortcut;
    PhotoMechanicMonitoring m_photoMechanic;
    UpdateNews m_updateNews;
    bool m_isAsking = false;
    bool m_isHidden = false; ///< the main window, on purpose: in the tray, or minimised without one
    std::unique_ptr<QMainWindow> m_mainWindow;
    QList<QAction*> m_shortcuts;        ///< the main window's items whose shortcuts work in all windows
    MenuContentView* m_panel = nullptr; ///< the main window's
    std::unique_ptr<TrayItem> m_tray;
    std::unique_ptr<AboutView> m_aboutWindow;
    std::unique_ptr<SettingsView> m_settingsWindow;
    std::unique_ptr<OnboardingView> m_onboardingWindow;
    std::unique_ptr<HelpView> m_helpWindow;
    std::unique_ptr<AnalyticsView> m_analyticsWindow;
};

} // namespace ostrelle
