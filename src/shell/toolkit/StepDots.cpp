// SPDX-License-Identifier: GPL-3.0-or-later
#include "shell/toolkit/StepDots.h"

#include "shell/toolkit/Theme.h"

#include <QPainter>

namespace ostrelle {

using namespace Qt::StringLiterals;

namespace {

constexpr int diameter = 7;
constexpr int gap = 6;

} // namespace

StepDots::StepDots(int count, QWidget* parent) : QWidget(parent), m_count(count) {
    setSizePolicy(QSizePolicy::Fixed, QSizePolicy::Fixed);
    setCurrent(0);
}

void StepDots::setCurrent(int step) {
    m_current = step;
    setAccessibleName(u"Page %1 of %2"_s.arg(step + 1).arg(m_count));
    update();
}

QSize StepDots::sizeHint() const {
    return {m_count * diameter + (m_count - 1) * gap, diameter};
}

void StepDots::paintEvent(QPaintEvent*) {
    const Theme& theme = Theme::of(*this);
    QPainter painter(this);
    painter.setRenderHint(QPainter::Antialiasing);
    painter.setPen(Qt::NoPen);
    for (int step = 0; step < m_count; ++step) {
        painter.setBrush(step == m_current ? theme.accent : theme.track);
        painter.drawEllipse(step * (diameter + gap), 0, diameter, diameter);
    }
}

} // namespace ostrelle
