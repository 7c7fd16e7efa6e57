// SPDX-License-Identifier: GPL-3.0-or-later
#pragma once

#include "shell/panel/Problems.h"

#include <QWidget>

class QLayout;

namespace ostrelle {

class PanelActions;

/// What needs the user's attention: a row for each problem, with the files behind it and what helps. Hidden
/// when there is none.
class ProblemsSection : public QWidget {
    Q_OBJECT

public:
    /// All must outlive the section.
    ProblemsSection(ShellParts parts, PanelActions& actions, const Problems& problems,
                    QWidget* parent = nullptr);

private:
    void showProblems();
    QWidget* makeRow(const Problem& problem);
    QWidget* makeMore(qsizetype count);
    QLayout* makeActions(const Problem& problem);

    ShellParts m_parts;
    PanelActions& m_actions;
    const Problems& m_problems;
};

} // namespace ostrelle
