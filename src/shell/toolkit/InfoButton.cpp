// SPDX-License-Identifier: GPL-3.0-or-later
#include "shell/toolkit/InfoButton.h"

#include "shell/toolkit/Popover.h"
#include "shell/toolkit/Theme.h"

#include <QHBoxLayout>
#include <QLabel>
#include <QPainter>
#include <QVBoxLayout>

namespace ostrelle {

using namespace Qt::StringLiterals;

namespace {

constexpr int circle = 16;
constexpr int pressable = 22; // a circle of 16 alone is hard to hit
constexpr int explanationWidth = 360;

QLabel* heading(const QString& words, TypeSize size) {
    QLabel* label = makeLabel(words, size);
    label->setFont(typeFont(size, QFont::DemiBold));
    return label;
}

/// A line of a list: its bullet hangs to the left of words that wrap.
QLayout* listLine(const QString& line, TypeSize size) {
    auto* layout = new QHBoxLayout;
    layout->setSpacing(5);
    layout->addWidget(makeLabel(line.left(1), size), 0, Qt::AlignTop);
    layout->addWidget(makeLabel(line.mid(2), size), 1);
    return layout;
}

void addLines(QVBoxLayout& layout, const InfoParagraph& paragraph, TypeSize size) {
    const QStringList lines = paragraph.text.split(u'\n', Qt::SkipEmptyParts);
    for (const QString& line : lines) {
        if (line.startsWith(u"• "_s) || line.startsWith(u"✓ "_s)) {
            layout.addLayout(listLine(line, size));
        } else {
            layout.addWidget(makeLabel(line, size));
        }
    }
}

QWidget* makeExplanation(const InfoText& text) {
    auto* explanation = new QWidget;
    explanation->setFixedWidth(widthForType(explanationWidth));
    auto* layout = new QVBoxLayout(explanation);
    layout->setContentsMargins(14, 12, 14, 13);
    layout->setSpacing(3);
    layout->addWidget(heading(text.title, TypeSize::text));
    for (const InfoParagraph& paragraph : text.paragraphs) {
        layout->addSpacing(paragraph.heading.isEmpty() ? 3 : 6);
        if (!paragraph.heading.isEmpty()) {
            layout->addWidget(heading(paragraph.heading, TypeSize::small));
        }
        addLines(*layout, paragraph, paragraph.heading.isEmpty() ? TypeSize::text : TypeSize::small);
    }
    return explanation;
}

QString asOneText(const InfoText& text) {
    QStringList parts;
    for (const InfoParagraph& paragraph : text.paragraphs) {
        parts << paragraph.heading << paragraph.text;
    }
    parts.removeAll(QString());
    return parts.join(u'\n');
}

} // namespace

InfoButton::InfoButton(const InfoText& text, QWidget* parent) : QPushButton(parent) {
    setSizePolicy(QSizePolicy::Fixed, QSizePolicy::Fixed);
    setAttribute(Qt::WA_Hover);
    setInfo(text);
    connect(this, &QPushButton::clicked, this, &InfoButton::openPopover);
}

void InfoButton::setInfo(const InfoText& text) {
    m_text = text;
    setAccessibleName(u"About “%1”"_s.arg(text.title));
}

Popover* InfoButton::popover() const {
    return m_popover;
}

void InfoButton::openPopover() {
    if (m_popover != nullptr) {
        return;
    }
    m_popover = new Popover(makeExplanation(m_text), this);
    m_popover->setAccessibleName(m_text.title);
    m_popover->setAccessibleDescription(asOneText(m_text));
    m_popover->openAtAnchor();
}

QSize InfoButton::sizeHint() const {
    return {pressable, pressable};
}

QSize InfoButton::minimumSizeHint() const {
    return sizeHint();
}

void InfoButton::paintEvent(QPaintEvent*) {
    const Theme& theme = Theme::of(*this);
    QPainter painter(this);
    painter.setRenderHint(QPainter::Antialiasing);
    painter.setOpacity(isEnabled() ? 1 : measure::disabledOpacity);
    const bool lit = underMouse() || m_popover != nullptr;
    QRectF ring(0, 0, circle - 1, circle - 1);
    ring.moveCenter(QRectF(rect()).center());
    painter.setPen(QPen(lit ? theme.text : theme.dim, 1.2));
    painter.drawEllipse(ring);
    const QPointF center = ring.center();
    painter.setPen(QPen(lit ? theme.text : theme.dim, 1.5, Qt::SolidLine, Qt::RoundCap));
    painter.drawPoint(center + QPointF(0, -3.4));
    painter.drawLine(center + QPointF(0, -0.4), center + QPointF(0, 3.6));
    if (hasFocus()) {
        painter.setPen(QPen(theme.accent, measure::focusRing));
        painter.drawEllipse(QRectF(rect()).adjusted(1, 1, -1, -1));
    }
}

} // namespace ostrelle
