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
constexpr int wanderMilliseconds = 1400;
constexpr double wandererShare = 0.3;

} // namespace

ProgressLine::ProgressLine(QWidget* parent) : QProgressBar(parent) {
    setRange(0, steps);
    setTextVisible(false);
    setSizePolicy(QSizePolicy::Expanding, QSizePolicy::Fixed);
    connect(&m_motion, &QVariantAnimation::valueChanged, this, qOverload<>(&QWidget::update));
}

void ProgressLine::setFraction(double fraction) {
    const double target = std::isnan(fraction) ? 0 : std::clamp(fraction, 0.0, 1.0); // nothing of nothing
    const bool wandered = m_indeterminate;
    m_indeterminate = false;
    setRange(0, steps);
    setValue(qRound(target * steps));
    if (!wandered && target == m_fraction) {
        return;
    }
    // Going back to the start means a new run: the bar must not be seen to shrink.
    const bool smoothly = !wandered && target > m_fraction && isVisible();
    m_fraction = target;
    moveTo(smoothly ? target : -1);
}

double ProgressLine::fraction() const {
    return m_fraction;
}

void ProgressLine::setIndeterminate(bool indeterminate) {
    if (indeterminate == m_indeterminate) {
        return;
    }
    if (!indeterminate) {
        setFraction(m_fraction);
        return;
    }
    m_indeterminate = true;
    setRange(0, 0);
    wander();
}

bool ProgressLine::isIndeterminate() const {
    return m_indeterminate;
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
    m_motion.setLoopCount(1);
    m_motion.setEasingCurve(QEasingCurve::OutCubic);
    m_motion.setDuration(milliseconds);
    m_motion.setStartValue(from.isValid() ? from : QVariant(0.0));
    m_motion.setEndValue(m_fraction);
    m_motion.start();
    update();
}

void ProgressLine::wander() {
    m_motion.stop();
    m_motion.setLoopCount(-1);
    m_motion.setEasingCurve(QEasingCurve::InOutSine);
    m_motion.setDuration(wanderMilliseconds);
    m_motion.setStartValue(0.0);
    m_motion.setEndValue(1.0);
    if (isVisible()) {
        m_motion.start();
    }
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

    const double at = m_motion.currentValue().toDouble();
    QRectF done = track;
    if (m_indeterminate) {
        done.setWidth(track.width() * wandererShare);
        done.moveLeft(track.x() - done.width() + at * (track.width() + done.width()));
    } else {
        done.setWidth(track.width() * at);
    }
    QPainterPath bar;
    bar.addRoundedRect(done, thickness / 2.0, thickness / 2.0);
    painter.fillPath(bar.intersected(outline), theme.accent);
}

void ProgressLine::showEvent(QShowEvent* event) {
    QProgressBar::showEvent(event);
    if (m_indeterminate) {
        wander();
    }
}

void ProgressLine::hideEvent(QHideEvent* event) {
    QProgressBar::hideEvent(event);
    if (m_indeterminate) {
        m_motion.stop(); // nothing moves out of sight
    }
}

} // namespace ostrelle
