// SPDX-License-Identifier: GPL-3.0-or-later
#include "shell/toolkit/Switch.h"

#include "shell/toolkit/AccessibleView.h"
#include "shell/toolkit/Theme.h"

#include <QPainter>
#include <QPointer>
#include <QStyle>
#include <utility>

namespace ostrelle {

namespace {

constexpr QSize track(34, 20);
constexpr double knobInset = 2;

} // namespace

Switch::Switch(QWidget* parent) : QCheckBox(parent) {
    setSizePolicy(QSizePolicy::Fixed, QSizePolicy::Fixed);
    setAccessibleRole(*this, QAccessible::CheckBox);
    m_knob.setStartValue(0.0);
    m_knob.setEndValue(0.0);
    connect(&m_knob, &QVariantAnimation::valueChanged, this, qOverload<>(&QWidget::update));
    connect(this, &QCheckBox::toggled, this, &Switch::slide);
}

void Switch::setGuard(Guard guard) {
    m_guard = std::move(guard);
}

QSize Switch::sizeHint() const {
    return track;
}

QSize Switch::minimumSizeHint() const {
    return track;
}

void Switch::nextCheckState() {
    if (!isChecked() && m_guard) {
        const QPointer<Switch> alive(this); // the guard may show a dialog, behind which the window may close
        if (!m_guard() || alive == nullptr) {
            return;
        }
    }
    QCheckBox::nextCheckState();
}

bool Switch::hitButton(const QPoint& position) const {
    return rect().contains(position);
}

void Switch::slide(bool on) {
    m_knob.stop();
    const int milliseconds = isVisible() ? style()->styleHint(QStyle::SH_Widget_Animation_Duration) : 0;
    m_knob.setDuration(milliseconds * 3 / 4);
    m_knob.setStartValue(milliseconds > 0 ? m_knob.currentValue() : on ? 1.0 : 0.0);
    m_knob.setEndValue(on ? 1.0 : 0.0);
    m_knob.setEasingCurve(QEasingCurve::InOutCubic);
    m_knob.start();
    update();
}

void Switch::paintEvent(QPaintEvent*) {
    const Theme& theme = Theme::of(*this);
    QPainter painter(this);
    painter.setRenderHint(QPainter::Antialiasing);
    painter.setOpacity(isEnabled() ? 1 : measure::disabledOpacity);
    painter.setPen(Qt::NoPen);

    QRectF area(QPointF(0, 0), QSizeF(track));
    area.moveCenter(QRectF(rect()).center());
    const double radius = area.height() / 2;
    painter.setBrush(isChecked() ? theme.accent : theme.track);
    painter.drawRoundedRect(area, radius, radius);

    const double diameter = area.height() - 2 * knobInset;
    const double way = area.width() - area.height();
    QRectF knob(area.x() + knobInset + m_knob.currentValue().toDouble() * way, area.y() + knobInset, diameter,
                diameter);
    painter.setBrush(QColor(0, 0, 0, 40));
    painter.drawEllipse(knob.translated(0, 0.8));
    painter.setBrush(Qt::white);
    painter.drawEllipse(knob);

    if (hasFocus()) {
        painter.setBrush(Qt::NoBrush);
        painter.setPen(QPen(isChecked() ? theme.text : theme.accent, measure::focusRing));
        painter.drawRoundedRect(area.adjusted(1, 1, -1, -1), radius - 1, radius - 1);
    }
}

} // namespace ostrelle
