// SPDX-License-Identifier: GPL-3.0-or-later
#include "shell/toolkit/PanelFoot.h"

#include "shell/toolkit/Theme.h"

#include <QPainter>
#include <QResizeEvent>
#include <QVBoxLayout>
#include <algorithm>

namespace ostrelle {

PanelFoot::PanelFoot(QWidget* parent) : QWidget(parent), m_rows(new QVBoxLayout(this)) {
    m_rows->setSpacing(4);
    setMargins(width());
}

/// The foot is as wide as the window, its rows no wider than the column above.
void PanelFoot::setMargins(int width) {
    constexpr int least = measure::windowMargin - measure::cardPadding;
    const int side = least + std::max(0, (width - widthForType(measure::widestColumn)) / 2);
    m_rows->setContentsMargins(side, 6, side, 8);
}

void PanelFoot::resizeEvent(QResizeEvent* event) {
    QWidget::resizeEvent(event);
    setMargins(event->size().width());
}

void PanelFoot::addRow(QWidget* row) {
    row->setContentsMargins(measure::cardPadding, 0, measure::cardPadding, 0);
    m_rows->addWidget(row);
}

void PanelFoot::addBareRow(QWidget* row) {
    m_rows->addWidget(row);
}

void PanelFoot::paintEvent(QPaintEvent*) {
    const Theme& theme = Theme::of(*this);
    QPainter painter(this);
    painter.fillRect(rect(), theme.card);
    painter.fillRect(0, 0, width(), 1, theme.line);
}

} // namespace ostrelle
