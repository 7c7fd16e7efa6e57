// SPDX-License-Identifier: GPL-3.0-or-later
#pragma once

#include <QWidget>

namespace ostrelle {

/// A row of dots: the number of steps, and the current one. Not for input.
class StepDots : public QWidget {
    Q_OBJECT

public:
    explicit StepDots(int count, QWidget* parent = nullptr);

    void setCurrent(int step);

    QSize sizeHint() const override;

protected:
    void paintEvent(QPaintEvent* event) override;

private:
    int m_count;
    int m_current = 0;
};

} // namespace ostrelle
