// SPDX-License-Identifier: GPL-3.0-or-later
#pragma once

#include <QLabel>

namespace ostrelle {

/// One line of words with changing figures: each digit is as wide as the widest, so that the line does not
/// jitter. (Qt gives no access to a font's tabular figures.)
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
