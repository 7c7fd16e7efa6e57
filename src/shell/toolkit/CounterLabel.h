// SPDX-License-Identifier: GPL-3.0-or-later
#pragma once

#include <QLabel>

namespace ostrelle {

/// One line of words with figures that count: each digit takes the width of the widest, so that the line does
/// not tremble as they change. (The toolkit's fonts cannot be asked for their tabular figures.)
class CounterLabel : public QLabel {
    Q_OBJECT

public:
    explicit CounterLabel(const QString& words = {}, QWidget* parent = nullptr);

    QSize sizeHint() const override;
    QSize minimumSizeHint() const override;

protected:
    void paintEvent(QPaintEvent* event) override;
};

} // namespace ostrelle
