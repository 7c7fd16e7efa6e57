// SPDX-License-Identifier: GPL-3.0-or-later
#include "shell/toolkit/Popover.h"

#include "shell/toolkit/AccessibleView.h"
#include "shell/toolkit/Compositing.h"
#include "shell/toolkit/Theme.h"

#include <QGuiApplication>
#include <QKeyEvent>
#include <QPainter>
#include <QPainterPath>
#include <QScreen>
#include <QVBoxLayout>
#include <algorithm>

namespace ostrelle {

namespace {

constexpr int shadow = 14; // the width of the shadow on each side
constexpr int gap = 4;     // between the anchor and the frame

} // namespace

Popover::Popover(QWidget* content, QWidget* anchor)
    : QFrame(anchor, Qt::Popup | Qt::FramelessWindowHint | Qt::NoDropShadowWindowHint), m_anchor(anchor) {
    setAttribute(Qt::WA_DeleteOnClose);
    setAttribute(Qt::WA_TranslucentBackground);
    setAttribute(Qt::WA_NoMouseReplay); // the click on the anchor that closes it must not open it again
    setFocusPolicy(Qt::StrongFocus);
    setAccessibleRole(*this, QAccessible::Dialog);
    auto* layout = new QVBoxLayout(this);
    layout->setContentsMargins(shadow, shadow, shadow, shadow);
    layout->addWidget(content);
}

void Popover::openAtAnchor() {
    ensurePolished();
    // The height of wrapped words depends on the width, so ask the layout for both.
    const QSize hint = layout()->totalSizeHint();
    const bool wraps = layout()->hasHeightForWidth();
    setFixedSize(hint.width(), wraps ? layout()->totalHeightForWidth(hint.width()) : hint.height());
    move(placeOnScreen());
    if (!isCompositing()) {
        cutToFrame();
    }
    show();
    m_anchor->update();
    connect(this, &QObject::destroyed, m_anchor, qOverload<>(&QWidget::update));
}

/// Without the shadow, which would be black, and with corners that are not smooth.
void Popover::cutToFrame() {
    QPainterPath frame;
    frame.addRoundedRect(QRectF(rect()).adjusted(shadow, shadow, -shadow, -shadow), measure::cardRadius,
                         measure::cardRadius);
    setMask(QRegion(frame.toFillPolygon().toPolygon()));
}

QPoint Popover::placeOnScreen() const {
    const QRect screen = m_anchor->screen()->availableGeometry();
    const QRect anchor(m_anchor->mapToGlobal(QPoint(0, 0)), m_anchor->size());
    const int beside = 2 * measure::cardPadding; // the frame's edge is slightly outside the anchor's
    int x = anchor.right() + 1 + beside + shadow - width();
    int y = anchor.bottom() + 1 + gap - shadow;
    const int above = anchor.top() - gap + shadow - height();
    if (y + height() - shadow > screen.bottom() && above + shadow >= screen.top()) {
        y = above;
    }
    x = std::clamp(x, screen.left() - shadow, std::max(screen.left(), screen.right() + 1 + shadow - width()));
    y = std::clamp(y, screen.top() - shadow, std::max(screen.top(), screen.bottom() + 1 + shadow - height()));
    return {x, y};
}

QWidget* Popover::hostOf(const Popover& popover) {
    QWidget* host = popover.m_anchor;
    do {
        host = host->parentWidget();
    } while (host != nullptr && !hasAccessibleRole(*host));
    return host;
}

void Popover::paintEvent(QPaintEvent*) {
    const Theme& theme = Theme::of(*this);
    QPainter painter(this);
    painter.setRenderHint(QPainter::Antialiasing);
    const QRectF frame = QRectF(rect()).adjusted(shadow, shadow, -shadow, -shadow);
    painter.setPen(Qt::NoPen);
    painter.setBrush(QColor(0, 0, 0, 3)); // overlapping layers darken towards the frame
    for (int spread = shadow; spread > 0; --spread) {
        const double radius = measure::cardRadius + spread;
        painter.drawRoundedRect(frame.adjusted(-spread, 3 - spread, spread, spread), radius, radius);
    }
    painter.setPen(theme.line);
    painter.setBrush(theme.card);
    painter.drawRoundedRect(frame.adjusted(0.5, 0.5, -0.5, -0.5), measure::cardRadius, measure::cardRadius);
}

void Popover::keyPressEvent(QKeyEvent* event) {
    switch (event->key()) {
    case Qt::Key_Escape:
    case Qt::Key_Space:
    case Qt::Key_Return:
    case Qt::Key_Enter:
        close();
        break;
    default:
        QFrame::keyPressEvent(event);
    }
}

} // namespace ostrelle
