// SPDX-License-Identifier: GPL-3.0-or-later
#pragma once

#include "shell/panel/PanelActions.h"
#include "shell/panel/ShellParts.h"

#include <QCoroTask>
#include <QWidget>

class QGridLayout;
class QStackedWidget;

namespace ostrelle {

class ActionButton;
class StepDots;

/// The tour of the first start. Left, Right and Enter turn its pages; it always starts with the first.
class OnboardingView : public QWidget {
    Q_OBJECT

public:
    explicit OnboardingView(ShellParts parts, QWidget* parent = nullptr);

    /// Counted from 0.
    int currentStep() const;

    /// Resumes when all tasks started here have ended.
    QCoro::Task<> finished() const { return m_actions.finished(); }

protected:
    bool eventFilter(QObject* watched, QEvent* event) override;
    void keyPressEvent(QKeyEvent* event) override;
    void paintEvent(QPaintEvent* event) override;
    void showEvent(QShowEvent* event) override;

private:
    QStackedWidget* makePages();
    QGridLayout* makeFoot();
    bool turnPage(int key);
    void back();
    void next();
    void finish();
    void showStep(int step);

    ShellParts m_parts;
    PanelActions m_actions;
    QStackedWidget* m_pages;
    ActionButton* m_back;
    ActionButton* m_next;
    ActionButton* m_getStarted;
    StepDots* m_dots;
};

} // namespace ostrelle
