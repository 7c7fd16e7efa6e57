// SPDX-License-Identifier: GPL-3.0-or-later
#pragma once

#include "state/PanelProgress.h"

#include <QWidget>

namespace ostrelle {

class CounterLabel;
class ElidedLabel;
class ProgressLine;

/// One row of the progress: words, a count beside them and a bar below; the row may lack any of them.
class ProgressRowView : public QWidget {
    Q_OBJECT

public:
    explicit ProgressRowView(QWidget* parent = nullptr);

    void setRow(const ProgressRow& row);

private:
    ElidedLabel* m_text;
    CounterLabel* m_count;
    ProgressLine* m_bar;
};

} // namespace ostrelle
