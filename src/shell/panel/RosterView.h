// SPDX-License-Identifier: GPL-3.0-or-later
#pragma once

#include "pipeline/CodeReplacements.h"

#include <QDialog>

namespace ostrelle {

/// Lists the entries of a roster as they go to the model. Deletes itself when closed.
class RosterView : public QDialog {
    Q_OBJECT

public:
    RosterView(const QString& fileName, const CodeReplacements& roster, QWidget* parent = nullptr);
};

} // namespace ostrelle
