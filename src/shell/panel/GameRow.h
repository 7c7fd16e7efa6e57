// SPDX-License-Identifier: GPL-3.0-or-later
#pragma once

#include "shell/panel/ShellParts.h"
#include "shell/toolkit/SettingRow.h"
#include "state/Games.h"

#include <QCoroTask>
#include <QPointer>

namespace ostrelle {

class Picker;

/// The choice of the game, and the way to a new one. No game changes while images are being captioned.
class GameRow : public SettingRow {
    Q_OBJECT

public:
    explicit GameRow(ShellParts parts, QWidget* parent = nullptr);

private:
    GameRow(ShellParts parts, Picker* picker, QWidget* parent);

    void showGames();
    void showState();
    void choose();
    void askForName();
    void begin(const QString& typed);
    static QCoro::Task<> askToRemove(ShellParts parts, QPointer<Games> games, QString name);

    ShellParts m_parts;
    Games* m_games;
    Picker* m_picker;
};

} // namespace ostrelle
