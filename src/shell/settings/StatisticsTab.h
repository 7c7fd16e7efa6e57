// SPDX-License-Identifier: GPL-3.0-or-later
#pragma once

#include "shell/panel/ShellParts.h"

#include <QWidget>

namespace ostrelle {

class Card;
class CounterLabel;
class SettingRow;
class SettingsActions;

/// How many images were captioned so far, how long that took, what it cost, and how full the prompt cache is.
class StatisticsTab : public QWidget {
    Q_OBJECT

public:
    /// The actions must outlive the tab.
    StatisticsTab(ShellParts parts, SettingsActions& actions, QWidget* parent = nullptr);

protected:
    void showEvent(QShowEvent* event) override;

private:
    void addReporting();
    void addUsage();
    void addCosts();
    void addPromptCache();
    void observe();
    void showFigures();

    ShellParts m_parts;
    SettingsActions& m_actions;
    CounterLabel* m_lifetimeImages = nullptr;
    CounterLabel* m_successRate = nullptr;
    CounterLabel* m_successCounts = nullptr;
    CounterLabel* m_averageTime = nullptr;
    CounterLabel* m_todaysCost = nullptr;
    CounterLabel* m_totalCost = nullptr;
    SettingRow* m_promptCache = nullptr;
};

} // namespace ostrelle
