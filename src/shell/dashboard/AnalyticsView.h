// SPDX-License-Identifier: GPL-3.0-or-later
#pragma once

#include "core/TaskGroup.h"
#include "shell/dashboard/ChartView.h"
#include "shell/panel/ShellParts.h"

#include <QCoroTask>
#include <QList>
#include <QTimer>
#include <QWidget>

class QLabel;
class QTableWidget;

namespace ostrelle {

class ActionButton;
class Picker;

/// The dashboard of the usage counters: figures, a chart, the days with their images, outcomes and costs.
/// Escape closes it.
class AnalyticsView : public QWidget {
    Q_OBJECT

public:
    explicit AnalyticsView(ShellParts parts, QWidget* parent = nullptr);

    /// Resumes when no export is under way.
    QCoro::Task<> finished() const { return m_tasks.finished(); }

protected:
    void showEvent(QShowEvent* event) override;
    void keyPressEvent(QKeyEvent* event) override;

private:
    QWidget* makeHead();
    QWidget* makeFigures();
    QWidget* makeChart();
    QWidget* makeActivity();
    QWidget* makeFoot();
    void showSoon();
    void showAll();
    void showActivity();
    static QCoro::Task<> exportData(ShellParts parts);

    ShellParts m_parts;
    TaskGroup m_tasks;
    QTimer m_change;
    int m_selectedDays = 30; ///< 0 for all time
    Picker* m_range = nullptr;
    QList<QLabel*> m_figures;
    ChartView* m_chart = nullptr;
    QTableWidget* m_activity = nullptr;
    ActionButton* m_send = nullptr;
    QLabel* m_sendObstacle = nullptr;
};

} // namespace ostrelle
