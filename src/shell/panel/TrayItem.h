// SPDX-License-Identifier: GPL-3.0-or-later
#pragma once

#include "shell/panel/PanelActions.h"
#include "shell/panel/Problems.h"
#include "shell/panel/ShellParts.h"
#include "shell/panel/TrayState.h"

#include <QMenu>
#include <QObject>
#include <memory>

class QSystemTrayIcon;

namespace ostrelle {

/// The program's item in the desktop's tray: what auto mode is doing, and a menu with what a photographer
/// does without the window. A tray that comes later, as after a login, is found, too.
class TrayItem : public QObject {
    Q_OBJECT

public:
    /// All must outlive the item.
    TrayItem(ShellParts parts, PanelActions& actions, const Problems& problems);
    ~TrayItem() override;

    /// Whether the user can reach the program through the tray now.
    bool isThere();

    const TrayState& state() const { return m_state; }
    QMenu& menu() { return m_menu; }

Q_SIGNALS:
    /// A tray is there now.
    void found();
    /// A click on the item: to show the window, or to hide it.
    void clicked();
    void showRequested();
    void quitRequested();

private:
    void makeMenu();
    void lookForTray();
    void update();

    ShellParts m_parts;
    PanelActions& m_actions;
    const Problems& m_problems;
    QMenu m_menu;
    QAction* m_autoMode = nullptr;
    QAction* m_pause = nullptr;
    QAction* m_stop = nullptr;
    TrayState m_state;
    std::unique_ptr<Timer> m_look;
    std::unique_ptr<QSystemTrayIcon> m_icon; ///< once a tray was there
};

} // namespace ostrelle
