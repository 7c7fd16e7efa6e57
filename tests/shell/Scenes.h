// SPDX-License-Identifier: GPL-3.0-or-later
#pragma once

#include "shell/ProgramWorld.h"
#include "shell/desktop/DesktopAlerts.h"

namespace ostrelle {

/// The program at a football game that is set up but for the auto mode.
struct GameWorld : ProgramWorld {
    GameWorld();
    ~GameWorld();

    template <typename Widget = QWidget>
    Widget* find(const QString& name, const QString& window = panel) {
        return ProgramWorld::window(window)->template findChild<Widget*>(name);
    }
    void useRoster(const QString& name, const QByteArray& bytes);
    /// 24 images, of which 16 are done, in batches of ten; or 8 in one batch.
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

/// A window of the program in a state that is worth a look.
struct Scene {
    QString name;
    QString window; ///< its title
    std::function<void(GameWorld& world)> open;

    /// The window, as it is to be looked at.
    QWidget& in(GameWorld& world) const;
};

/// Each view in each of its states that look different.
QList<Scene> scenes();

} // namespace ostrelle
