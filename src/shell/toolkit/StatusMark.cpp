// SPDX-License-Identifier: GPL-3.0-or-later
#include "shell/toolkit/StatusMark.h"

#include "shell/toolkit/Icon.h"
#include "shell/toolkit/Theme.h"

#include <QPainter>
#include <QStyle>

namespace ostrelle {

namespace {

constexpr int sign = 16;
constexpr int gap = 6;

QColor colorOf(StatusTone tone, const Theme& theme) {
    switch (tone) {
    case StatusTone::good:
        return theme.good;
    case StatusTone::missing:
        return theme.missing;
    case StatusTone::destroying:
        return theme.destroying;
    case StatusTone::plain:
        break;
    }
    return theme.dim;
}

IconName signOf(StatusTone tone) {
    switch (tone) {
    case StatusTone::good:
        return IconName::check;
    case StatusTone::destroying:
        return IconName::cross;
    case StatusTone::missing:
    case StatusTone::plain:
        break;
    }
    return IconName::warning;
}

} // namespace

StatusMark::StatusMark(StatusTone tone, const QString& words, QWidget* parent)
    : QLabel(parent), m_tone(tone) {
    setTextFormat(Qt::PlainText);
    setStatus(tone, words);
}

StatusTone StatusMark::tone() const {
    return m_tone;
}

void StatusMark::setStatus(StatusTone tone, const QString& words) {
    m_tone = tone;
    setContentsMargins(tone == StatusTone::plain ? 0 : sign + gap, 0, 0, 0);
    setText(words);
    update();
}

void StatusMark::paintEvent(QPaintEvent*) {
    if (text().isEmpty()) {
        return;
    }
    const QColor color = colorOf(m_tone, Theme::of(*this));
    QPainter painter(this);
    painter.setOpacity(isEnabled() ? 1 : measure::disabledOpacity);
    const int wrap = wordWrap() ? Qt::TextWordWrap : Qt::TextSingleLine;
    const QRect area = contentsRect();
    const QRect words =
        painter.boundingRect(area, static_cast<int>(Qt::AlignLeft | Qt::AlignVCenter) | wrap, text());
    if (m_tone != StatusTone::plain) {
        const double top = words.top() + (fontMetrics().height() - sign) / 2.0;
        paintIcon(painter, QRectF(0, top, sign, sign), signOf(m_tone), color);
    }
    painter.setPen(color);
    painter.drawText(words, static_cast<int>(Qt::AlignLeft | Qt::AlignTop) | wrap, text());
}

} // namespace ostrelle
