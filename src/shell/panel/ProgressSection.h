// SPDX-License-Identifier: GPL-3.0-or-later
#pragma once

#include "shell/panel/ShellParts.h"

#include <QList>
#include <QWidget>

namespace ostrelle {

class ProgressRowView;

/// How far the run and the transfer have come; takes no room while nothing goes on.
class ProgressSection : public QWidget {
    Q_OBJECT

public:
    explicit ProgressSection(ShellParts parts, QWidget* parent = nullptr);

private:
    void showProgress();

    ShellParts m_parts;
    QList<ProgressRowView*> m_rows; // those that are not needed now are hidden
};

} // namespace ostrelle
