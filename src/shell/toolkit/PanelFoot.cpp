// SPDX-License-Identifier: GPL-3.0-or-later
#include "shell/toolkit/PanelFoot.h"

#include "shell/toolkit/Theme.h"

#include <QPainter>
#include <QVBoxLayout>

namespace ostrelle {

PanelFoot::PanelFoot(QWidget* parent) : QWidget(parent), m_rows(new QVBoxLayout(this)) {
    constexpr int side = measure::windowMargin - measure::cardPadding;
    m_rows->setContentsMargins(side, 6, side, 8);
    m_rows->setSpacing(4);
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
