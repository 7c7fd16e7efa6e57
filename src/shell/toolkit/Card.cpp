// SPDX-License-Identifier: GPL-3.0-or-later
#include "shell/toolkit/Card.h"

#include "shell/toolkit/AccessibleView.h"
#include "shell/toolkit/Theme.h"

#include <QEvent>
#include <QLabel>
#include <QPainter>
#include <QVBoxLayout>

namespace ostrelle {

Card::Card(const QString& title, QWidget* parent)
    : QWidget(parent), m_title(new QLabel(title, this)), m_rowLayout(new QVBoxLayout) {
    QFont font = typeFont(TypeSize::small, QFont::DemiBold);
    font.setLetterSpacing(QFont::PercentageSpacing, 102);
    m_title->setFont(font);
    m_title->setTextFormat(Qt::PlainText);
    m_title->setForegroundRole(QPalette::PlaceholderText);
    m_title->setContentsMargins(2, 0, 2, 5);
    m_title->setVisible(!title.isEmpty());
    setAccessibleRole(*this, QAccessible::Grouping);
    setAccessibleName(title);

    auto* layout = new QVBoxLayout(this);
    layout->setContentsMargins(0, 0, 0, 0);
    layout->setSpacing(0);
    layout->addWidget(m_title);
    m_rowLayout->setContentsMargins(1, 1, 1, 1);
    m_rowLayout->setSpacing(1); // for the line between two rows
    layout->addLayout(m_rowLayout);
}

void Card::addRow(QWidget* row) {
    m_rows.append(row);
    m_rowLayout->addWidget(row);
}

QWidget* Card::addPaddedRow(QWidget* content) {
    auto* row = new QWidget;
    auto* layout = new QVBoxLayout(row);
    layout->setContentsMargins(measure::cardPadding, 9, measure::cardPadding, 9);
    layout->addWidget(content);
    addRow(row);
    return row;
}

QString Card::title() const {
    return m_title->text();
}

bool Card::event(QEvent* event) {
    if (event->type() == QEvent::LayoutRequest) {
        update(); // the lines have moved with the rows
    }
    return QWidget::event(event);
}

void Card::paintEvent(QPaintEvent*) {
    const Theme& theme = Theme::of(*this);
    QPainter painter(this);
    painter.setRenderHint(QPainter::Antialiasing);
    painter.setPen(theme.line);
    painter.setBrush(theme.card);
    painter.drawRoundedRect(frame(), measure::cardRadius, measure::cardRadius);
    bool first = true;
    for (const QWidget* row : m_rows) {
        if (!row->isVisibleTo(this)) {
            continue;
        }
        if (!first) {
            painter.fillRect(1, row->y() - 1, width() - 2, 1, theme.line);
        }
        first = false;
    }
}

QRectF Card::frame() const {
    const QRect rows = m_rowLayout->geometry();
    return QRectF(rows).adjusted(0.5, 0.5, -0.5, -0.5);
}

} // namespace ostrelle
