// SPDX-License-Identifier: GPL-3.0-or-later
#include "shell/toolkit/ElidedLabel.h"

#include <QHelpEvent>
#include <QPainter>
#include <QStyle>
#include <QToolTip>

namespace ostrelle {

namespace {

constexpr int usualCharacters = 12;
constexpr int fewestCharacters = 9; // fewer mean nothing to anyone

} // namespace

ElidedLabel::ElidedLabel(const QString& words, Qt::TextElideMode cut, QWidget* parent)
    : QLabel(words, parent), m_cut(cut) {
    setTextFormat(Qt::PlainText);
    setSizePolicy(QSizePolicy::Expanding, QSizePolicy::Fixed);
}

bool ElidedLabel::isCut() const {
    return shownWords() != text();
}

QSize ElidedLabel::sizeHint() const {
    return {fontMetrics().averageCharWidth() * usualCharacters, fontMetrics().height()};
}

QSize ElidedLabel::minimumSizeHint() const {
    return {fontMetrics().averageCharWidth() * fewestCharacters, fontMetrics().height()};
}

void ElidedLabel::paintEvent(QPaintEvent*) {
    QPainter painter(this);
    const Qt::Alignment side = QStyle::visualAlignment(layoutDirection(), alignment());
    style()->drawItemText(&painter, contentsRect(), static_cast<int>(side) | Qt::TextSingleLine, palette(),
                          isEnabled(), shownWords(), foregroundRole());
}

bool ElidedLabel::event(QEvent* event) {
    if (event->type() == QEvent::ToolTip && toolTip().isEmpty() && isCut()) {
        QToolTip::showText(static_cast<QHelpEvent*>(event)->globalPos(), text(), this);
        return true;
    }
    return QLabel::event(event);
}

QString ElidedLabel::shownWords() const {
    return fontMetrics().elidedText(text(), m_cut, contentsRect().width());
}

} // namespace ostrelle
