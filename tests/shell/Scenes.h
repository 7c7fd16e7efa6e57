// SPDX-License-Identifier: GPL-3.0-or-later
#pragma once

#include "shell/ProgramWorld.h"
#include "shell/desktop/DesktopAlerts.h"

namespace ostrelle {

/// The program set up for a football game, with auto mode off.
struct GameWorld : ProgramWorld {
    GameWorld();
    ~GameWorld();

    template <typename Widget = QWidget>
    Widget* find(const QString& name, const QString& window = panel) {
        return ProgramWorld::window(window)->template findChild<Widget*>(name);
    }
    void useRoster(const QString& name, const QByteArray& bytes);
    /// 24 images in batches of ten, 16 of them done; or 8 in one batch.
    void setRun(qint64 batches);
    void showSettings(int tab);
    void showTour(int page);
    /// Shows an alert that nobody answers.
    void ask(const Alert& alert) { m_answer = m_desktop.show(alert); }

    static const QString panel, settingsWindow, tour;

private:
    DesktopAlerts m_desktop;
    std::optional<QCoro::Task<QString>> m_answer;
};

/// A window of the program in a state worth a look.
struct Scene {
    QString name;
    QString window; ///< its title
    std::function<void(GameWorld& world)> open;

    /// Brings the program into the state and returns the window.
    QWidget& in(GameWorld& world) const;
};

/// Every view in each state that looks different.
QList<Scene> scenes();

} // namespace ostrelle
