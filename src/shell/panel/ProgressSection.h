// SPDX-License-Identifier: GPL-3.0-or-later
#pragma once

#include "shell/panel/ShellParts.h"

#include <QList>
#include <QWidget>

namespace ostrelle {

class ProgressRowView;

/// The progress of the run and the transfer; takes no room while neither is running.
class ProgressSection : public QWidget {
    Q_OBJECT

public:
    explicit ProgressSection(ShellParts parts, QWidget* parent = nullptr);

private:
    void showProgress();

    ShellParts m_parts;
    QList<ProgressRowView*> m_rows; // those not needed now are hidden
};

} // namespace ostrelle
