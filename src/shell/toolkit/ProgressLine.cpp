// SPDX-License-Identifier: GPL-3.0-or-later
#include "shell/toolkit/ProgressLine.h"

#include "shell/toolkit/Theme.h"

#include <QPainter>
#include <QPainterPath>
#include <QStyle>
#include <algorithm>
#include <cmath>

namespace ostrelle {

namespace {

constexpr int thickness = 6;
constexpr int steps = 1000; // of the underlying progress bar, which screen readers read

} // namespace

ProgressLine::ProgressLine(QWidget* parent) : QProgressBar(parent) {
    setRange(0, steps);
    setTextVisible(false);
    setSizePolicy(QSizePolicy::Expanding, QSizePolicy::Fixed);
    connect(&m_motion, &QVariantAnimation::valueChanged, this, qOverload<>(&QWidget::update));
}

void ProgressLine::setFraction(double fraction) {
    const double target = std::isnan(fraction) ? 0 : std::clamp(fraction, 0.0, 1.0); // nothing of nothing
    setValue(qRound(target * steps));
    if (target == m_fraction) {
        return;
    }
    // Going back to the start means a new run: the bar must not be seen to shrink.
    const bool smoothly = target > m_fraction && isVisible();
    m_fraction = target;
    moveTo(smoothly ? target : -1);
}

QSize ProgressLine::sizeHint() const {
    return {120, thickness};
}

QSize ProgressLine::minimumSizeHint() const {
    return {24, thickness};
}

void ProgressLine::moveTo(double fraction) {
    const int milliseconds = fraction < 0 ? 0 : style()->styleHint(QStyle::SH_Widget_Animation_Duration);
    const QVariant from = milliseconds > 0 ? m_motion.currentValue() : QVariant(m_fraction);
    m_motion.stop();
    m_motion.setEasingCurve(QEasingCurve::OutCubic);
    m_motion.setDuration(milliseconds);
    m_motion.setStartValue(from.isValid() ? from : QVariant(0.0));
    m_motion.setEndValue(m_fraction);
    m_motion.start();
    update();
}

void ProgressLine::paintEvent(QPaintEvent*) {
    const Theme& theme = Theme::of(*this);
    QPainter painter(this);
    painter.setRenderHint(QPainter::Antialiasing);
    painter.setOpacity(isEnabled() ? 1 : measure::disabledOpacity);
    QRectF track(0, 0, width(), thickness);
    track.moveCenter(QRectF(rect()).center());
    QPainterPath outline;
    outline.addRoundedRect(track, thickness / 2.0, thickness / 2.0);
    painter.fillPath(outline, theme.track);

    QRectF done = track;
    done.setWidth(track.width() * m_motion.currentValue().toDouble());
    QPainterPath bar;
    bar.addRoundedRect(done, thickness / 2.0, thickness / 2.0);
    painter.fillPath(bar.intersected(outline), theme.accent);
}

} // namespace ostrelle
