// SPDX-License-Identifier: GPL-3.0-or-later
#pragma once

#include "shell/panel/ShellParts.h"

#include <QWidget>

namespace ostrelle {

class ActionButton;
class PanelActions;

/// The two actions: chosen images, and all of the source. Both are disabled while images are being captioned.
class ActionsBar : public QWidget {
    Q_OBJECT

public:
    /// The actions must outlive the bar.
    ActionsBar(ShellParts parts, PanelActions& actions, QWidget* parent = nullptr);

private:
    void showSource();
    void showState();

    ShellParts m_parts;
    ActionButton* m_select;
    ActionButton* m_all;
};

} // namespace ostrelle
