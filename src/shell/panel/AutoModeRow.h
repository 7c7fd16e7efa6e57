// SPDX-License-Identifier: GPL-3.0-or-later
#pragma once

#include "shell/panel/ShellParts.h"

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
    /// The actions must outlive the row.
    AutoModeRow(ShellParts parts, PanelActions& actions, QWidget* parent = nullptr);

private:
    QWidget* makeStatusLine();
    void showState();
    void showSource();

    ShellParts m_parts;
    Switch* m_switch;
    SettingRow* m_row;
    QWidget* m_statusLine = nullptr;
    CounterLabel* m_status = nullptr;
};

} // namespace ostrelle
