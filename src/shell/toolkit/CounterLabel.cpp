// SPDX-License-Identifier: GPL-3.0-or-later
#include "shell/toolkit/CounterLabel.h"

#include <QPainter>
#include <QStyle>
#include <algorithm>

namespace ostrelle {

namespace {

int widestDigit(const QFontMetrics& metrics) {
    int widest = 0;
    for (char16_t digit = u'0'; digit <= u'9'; ++digit) {
        widest = std::max(widest, metrics.horizontalAdvance(QChar(digit)));
    }
    return widest;
}

/// Calls `place` with each run of words and each digit, and its offset; returns the total width.
template <typename Place>
int layOut(const QString& words, const QFontMetrics& metrics, Place place) {
    const int cell = widestDigit(metrics);
    int offset = 0;
    qsizetype start = 0;
    while (start < words.size()) {
        qsizetype end = start + 1;
        const bool digit = words.at(start).isDigit();
        while (!digit && end < words.size() && !words.at(end).isDigit()) {
            ++end;
        }
        const QString run = words.mid(start, end - start);
        const int width = metrics.horizontalAdvance(run);
        place(run, digit ? offset + (cell - width) / 2 : offset);
        offset += digit ? cell : width;
        start = end;
    }
    return offset;
}

} // namespace

CounterLabel::CounterLabel(const QString& words, QWidget* parent) : QLabel(words, parent) {
    setTextFormat(Qt::PlainText);
}

QSize CounterLabel::sizeHint() const {
    const int width = layOut(text(), fontMetrics(), [](const QString&, int) {});
    return QSize(width, fontMetrics().height()).grownBy(contentsMargins());
}

QSize CounterLabel::minimumSizeHint() const {
    return sizeHint();
}

void CounterLabel::paintEvent(QPaintEvent*) {
    QPainter painter(this);
    const QPalette::ColorGroup group = isEnabled() ? QPalette::Active : QPalette::Disabled;
    painter.setPen(palette().color(group, foregroundRole()));
    const QRect area = QStyle::alignedRect(layoutDirection(), alignment(),
                                           sizeHint().shrunkBy(contentsMargins()), contentsRect());
    const int baseline = area.y() + fontMetrics().ascent();
    layOut(text(), fontMetrics(),
           [&](const QString& run, int offset) { painter.drawText(area.x() + offset, baseline, run); });
}

} // namespace ostrelle
