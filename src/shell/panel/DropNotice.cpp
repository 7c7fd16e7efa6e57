// SPDX-License-Identifier: GPL-3.0-or-later
#include "shell/panel/DropNotice.h"

#include "shell/toolkit/Theme.h"

#include <QPainter>

namespace ostrelle {

using namespace Qt::StringLiterals;

DropNotice::DropNotice(QWidget* window) : QWidget(window) {
    setObjectName(u"dropNotice"_s);
    hide();
}

void DropNotice::showOver(const QString& words, Welcome welcome) {
    m_words = words;
    m_welcome = welcome;
    setAccessibleName(words);
    setGeometry(parentWidget()->rect());
    raise();
    show();
    update();
}

void DropNotice::paintEvent(QPaintEvent*) {
    const Theme& theme = Theme::of(*this);
    const QColor color = m_welcome == Welcome::yes ? theme.accent : theme.missing;
    QPainter painter(this);
    painter.setRenderHint(QPainter::Antialiasing);
    constexpr float opacity = 0.92F; // the window still shows through
    QColor ground = theme.ground;
    ground.setAlphaF(opacity);
    painter.fillRect(rect(), ground);
    QPen pen(color, measure::focusRing, Qt::DashLine);
    painter.setPen(pen);
    constexpr int margin = measure::windowMargin;
    painter.drawRoundedRect(rect().adjusted(margin, margin, -margin, -margin), measure::cardRadius,
                            measure::cardRadius);
    painter.setPen(m_welcome == Welcome::yes ? theme.text : color);
    painter.setFont(typeFont(TypeSize::text, QFont::DemiBold));
    constexpr int inner = 3 * margin;
    painter.drawText(rect().adjusted(inner, inner, -inner, -inner), Qt::AlignCenter | Qt::TextWordWrap,
                     m_words);
}

/// Should the end of a drag ever get lost.
void DropNotice::mousePressEvent(QMouseEvent*) {
    hide();
}

} // namespace ostrelle
