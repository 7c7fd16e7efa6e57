// SPDX-License-Identifier: GPL-3.0-or-later
#include "shell/settings/SettingsTabBar.h"

#include "shell/toolkit/Theme.h"

#include <QPainter>
#include <QStyle>
#include <QWheelEvent>

namespace ostrelle {

namespace {

constexpr int sign = 17;
constexpr int signGap = 6;
constexpr int padding = 14;
constexpr int tabGap = 4;
constexpr double tabRadius = 8;

/// The font of the current tab's name. The other tabs get as much room, so that none moves.
QFont currentFont() {
    return typeFont(TypeSize::text, QFont::DemiBold);
}

} // namespace

SettingsTabBar::SettingsTabBar(QWidget* parent) : QTabBar(parent) {
    setDrawBase(false);
    setExpanding(false);
    setUsesScrollButtons(false);
    setElideMode(Qt::ElideNone);
    setMouseTracking(true);
    setAttribute(Qt::WA_Hover);
}

void SettingsTabBar::addTab(IconName tabSign, const QString& name) {
    m_signs.append(tabSign);
    QTabBar::addTab(name);
}

void SettingsTabBar::selectNext() {
    setCurrentIndex((currentIndex() + 1) % count());
}

void SettingsTabBar::selectPrevious() {
    setCurrentIndex((currentIndex() + count() - 1) % count());
}

QSize SettingsTabBar::tabSizeHint(int index) const {
    const QFontMetrics metrics(currentFont());
    const int words = metrics.size(Qt::TextShowMnemonic, tabText(index)).width();
    return {tabGap + 2 * padding + sign + signGap + words, metrics.height() + 14};
}

QSize SettingsTabBar::minimumTabSizeHint(int index) const {
    return tabSizeHint(index);
}

void SettingsTabBar::paintEvent(QPaintEvent*) {
    QPainter painter(this);
    painter.setRenderHint(QPainter::Antialiasing);
    for (int index = 0; index < count(); ++index) {
        paintTab(painter, index);
    }
}

void SettingsTabBar::paintTab(QPainter& painter, int index) const {
    const Theme& theme = Theme::of(*this);
    const QRectF area = QRectF(tabRect(index)).adjusted(tabGap / 2.0, 0, -tabGap / 2.0, 0);
    const bool isCurrent = index == currentIndex();
    const bool isLit = underMouse() && tabAt(mapFromGlobal(QCursor::pos())) == index;
    if (isCurrent) {
        painter.setPen(theme.line);
        painter.setBrush(theme.field);
        painter.drawRoundedRect(area.adjusted(0.5, 0.5, -0.5, -0.5), tabRadius, tabRadius);
    }
    if (isCurrent && hasFocus()) {
        painter.setPen(QPen(theme.accent, measure::focusRing));
        painter.setBrush(Qt::NoBrush);
        painter.drawRoundedRect(area.adjusted(1, 1, -1, -1), tabRadius, tabRadius);
    }
    const QColor color = isCurrent ? theme.accent : isLit ? theme.text : theme.dim;
    const bool underlines = style()->styleHint(QStyle::SH_UnderlineShortcut, nullptr, this) != 0;
    const int mnemonic = underlines ? Qt::TextShowMnemonic : Qt::TextHideMnemonic;
    painter.setFont(isCurrent ? currentFont() : typeFont(TypeSize::text));
    painter.setPen(color);
    const int words = painter.fontMetrics().size(mnemonic, tabText(index)).width();
    const double left = area.center().x() - (sign + signGap + words) / 2.0;
    paintIcon(painter, QRectF(left, area.center().y() - sign / 2.0, sign, sign), m_signs.at(index), color);
    painter.drawText(QRectF(left + sign + signGap, area.top(), words + 1, area.height()),
                     static_cast<int>(Qt::AlignLeft | Qt::AlignVCenter) | mnemonic, tabText(index));
}

void SettingsTabBar::wheelEvent(QWheelEvent* event) {
    event->ignore(); // the wheel scrolls past a page's end; it must not change tabs
}

} // namespace ostrelle
