// SPDX-License-Identifier: GPL-3.0-or-later
#pragma once

#include "shell/panel/Problems.h"

#include <QWidget>

namespace ostrelle {

class CounterLabel;
class PanelActions;
class SettingRow;
class Switch;

/// The switch of auto mode, with the state of auto mode below it while it is on.
class AutoModeRow : public QWidget {
    Q_OBJECT

public:
    /// The actions and problems must outlive the row.
    AutoModeRow(ShellParts parts, PanelActions& actions, const Problems& problems, QWidget* parent = nullptr);

private:
    class Dot;

    QWidget* makeStatusLine();
    void showState();
    /// Watching, working, or in need of attention.
    void showDot();
    void showSource();

    ShellParts m_parts;
    const Problems& m_problems;
    Switch* m_switch;
    SettingRow* m_row;
    QWidget* m_statusLine = nullptr;
    Dot* m_dot = nullptr;
    CounterLabel* m_status = nullptr;
};

} // namespace ostrelle
