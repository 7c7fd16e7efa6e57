// SPDX-License-Identifier: GPL-3.0-or-later
#pragma once

#include "shell/panel/ShellParts.h"

#include <QList>
#include <QWidget>

class QVBoxLayout;

namespace ostrelle {

class ActionButton;
class PanelActions;
class ProgressRowView;

/// The progress of the run and the transfer, and a button that stops the captioning; takes no room while
/// neither is running.
class ProgressSection : public QWidget {
    Q_OBJECT

public:
    /// The actions must outlive the section.
    ProgressSection(ShellParts parts, PanelActions& actions, QWidget* parent = nullptr);

private:
    void addPause(PanelActions& actions);
    void addStop(PanelActions& actions);
    void showProgress();

    ShellParts m_parts;
    ActionButton* m_pause;
    ActionButton* m_stop;
    QVBoxLayout* m_rowsLayout;
    QList<ProgressRowView*> m_rows; // those not needed now are hidden
};

} // namespace ostrelle
