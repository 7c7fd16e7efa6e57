// SPDX-License-Identifier: GPL-3.0-or-later
#pragma once

#include <QProgressBar>
#include <QVariantAnimation>

namespace ostrelle {

/// A thin bar that moves smoothly to the fraction done, or wanders while that is unknown.
class ProgressLine : public QProgressBar {
    Q_OBJECT

public:
    explicit ProgressLine(QWidget* parent = nullptr);

    /// From 0 to 1; other values are clamped. Ends the indeterminate state.
    void setFraction(double fraction);
    double fraction() const;

    void setIndeterminate(bool indeterminate);
    bool isIndeterminate() const;

    QSize sizeHint() const override;
    QSize minimumSizeHint() const override;

protected:
    void paintEvent(QPaintEvent* event) override;
    void showEvent(QShowEvent* event) override;
    void hideEvent(QHideEvent* event) override;

private:
    void moveTo(double fraction);
    void wander();

    double m_fraction = 0;
    bool m_indeterminate = false;
    QVariantAnimation m_motion{this};
};

} // namespace ostrelle
