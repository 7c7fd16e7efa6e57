// SPDX-License-Identifier: GPL-3.0-or-later
#pragma once

#include <QProgressBar>
#include <QVariantAnimation>

namespace ostrelle {

/// A thin bar that moves smoothly to the fraction done.
class ProgressLine : public QProgressBar {
    Q_OBJECT

public:
    explicit ProgressLine(QWidget* parent = nullptr);

    /// From 0 to 1; other values are clamped.
    void setFraction(double fraction);

    QSize sizeHint() const override;
    QSize minimumSizeHint() const override;

protected:
    void paintEvent(QPaintEvent* event) override;

private:
    void moveTo(double fraction);

    double m_fraction = 0;
    QVariantAnimation m_motion{this};
};

} // namespace ostrelle
