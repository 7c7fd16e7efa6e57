// SPDX-License-Identifier: GPL-3.0-or-later
#include "shell/dashboard/ChartView.h"

#include "core/Text.h"
#include "shell/toolkit/AccessibleView.h"
#include "shell/toolkit/Icon.h"
#include "shell/toolkit/Theme.h"

#include <QKeyEvent>
#include <QMouseEvent>
#include <QPainter>
#include <algorithm>
#include <cmath>

namespace ostrelle {

using namespace Qt::StringLiterals;

namespace {

constexpr qreal leastPitch = 5; // from one bar to the next, so that each can be told and pointed at
constexpr qreal mostPitch = 48;
constexpr qreal gap = 0.3; // of the pitch

/// "MM/dd" of "yyyy-MM-dd".
QString shortDate(const QString& date) {
    return date.mid(5).replace(u'-', u'/');
}

QString wordsOf(const ChartView::Bar& bar) {
    const QString days = bar.first == bar.last ? bar.first : bar.first + u" to "_s + bar.last;
    return u"%1: %2 image%3"_s.arg(days).arg(bar.count).arg(plural(bar.count));
}

} // namespace

ChartView::ChartView(QWidget* parent) : QWidget(parent) {
    setObjectName(u"chart"_s);
    setAccessibleRole(*this, QAccessible::Chart);
    setAccessibleName(u"Images Processed Over Time"_s);
    setMouseTracking(true);
    setFocusPolicy(Qt::StrongFocus);
    setSizePolicy(QSizePolicy::Expanding, QSizePolicy::Expanding);
    setMinimumHeight(widthForType(150));
}

QSize ChartView::sizeHint() const {
    return {widthForType(500), widthForType(190)};
}

void ChartView::setData(const QList<DayCount>& data) {
    m_data = data;
    m_current = -1;
    setFocusPolicy(data.isEmpty() ? Qt::NoFocus : Qt::StrongFocus);
    setAccessibleDescription(data.isEmpty() ? u"No processing data yet"_s
                                            : u"The arrow keys tell each bar."_s);
    update();
}

QRectF ChartView::plot() const {
    const int line = QFontMetrics(typeFont(TypeSize::small)).height();
    return QRectF(rect()).adjusted(0, line + 4, 0, -line - 6);
}

QList<ChartView::Bar> ChartView::bars() const {
    const auto most = std::max<qsizetype>(static_cast<qsizetype>(plot().width() / leastPitch), 1);
    const qsizetype each = (m_data.size() + most - 1) / most; // days in a bar
    QList<Bar> bars;
    for (qsizetype index = 0; index < m_data.size(); ++index) {
        const DayCount& day = m_data.at(index);
        if (index % each == 0) {
            bars.append({.first = day.date, .last = day.date});
        }
        bars.last().last = day.date;
        bars.last().count += day.count;
    }
    return bars;
}

QString ChartView::currentWords() const {
    const QList<Bar> all = bars();
    return m_current >= 0 && m_current < all.size() ? wordsOf(all.at(m_current)) : QString();
}

QRectF ChartView::rectangleOf(qsizetype index, const QList<Bar>& bars) const {
    const QRectF area = plot();
    const qreal pitch = std::min(area.width() / static_cast<qreal>(bars.size()), mostPitch);
    const auto highest = std::max_element(bars.begin(), bars.end(),
                                          [](const Bar& a, const Bar& b) { return a.count < b.count; });
    const qreal scale = static_cast<qreal>(std::max<qint64>(highest->count, 1));
    const qreal height = std::max(area.height() * static_cast<qreal>(bars.at(index).count) / scale, 1.0);
    return {area.left() + pitch * (static_cast<qreal>(index) + gap / 2), area.bottom() - height,
            pitch * (1 - gap), height};
}

void ChartView::paintEvent(QPaintEvent*) {
    QPainter painter(this);
    painter.setRenderHint(QPainter::Antialiasing);
    painter.setFont(typeFont(TypeSize::small));
    const QList<Bar> all = bars();
    if (all.isEmpty()) {
        paintEmpty(painter);
        return;
    }
    paintBars(painter, all);
    paintLabels(painter, all);
}

void ChartView::paintBars(QPainter& painter, const QList<Bar>& bars) const {
    const Theme& theme = Theme::of(*this);
    const QRectF area = plot();
    painter.setPen(theme.line);
    painter.drawLine(area.bottomLeft(), area.bottomRight());
    painter.setPen(Qt::NoPen);
    for (qsizetype index = 0; index < bars.size(); ++index) {
        const QRectF bar = rectangleOf(index, bars);
        const qreal radius = std::min(bar.width() / 4, 3.0);
        painter.setBrush(index == m_current ? theme.text : theme.accent);
        painter.drawRoundedRect(bar, radius, radius);
    }
}

void ChartView::paintLabels(QPainter& painter, const QList<Bar>& bars) const {
    const Theme& theme = Theme::of(*this);
    const QFontMetrics metrics(painter.font());
    const QRectF area = plot();
    painter.setPen(theme.dim);
    qreal free = 0; // where the next label may begin
    for (qsizetype index = 0; index < bars.size(); ++index) {
        const QString date = shortDate(bars.at(index).first);
        const qreal width = metrics.horizontalAdvance(date);
        const qreal left = std::clamp(rectangleOf(index, bars).center().x() - width / 2, 0.0,
                                      std::max(area.width() - width, 0.0));
        if (left >= free) {
            painter.drawText(QPointF(left, height() - metrics.descent() - 1), date);
            free = left + width + metrics.averageCharWidth() * 2;
        }
    }
    const qint64 highest = std::max_element(bars.begin(), bars.end(), [](const Bar& a, const Bar& b) {
                               return a.count < b.count;
                           })->count;
    const QString words = currentWords();
    painter.setPen(words.isEmpty() ? theme.dim : theme.text);
    painter.drawText(QPointF(0, metrics.ascent()), words.isEmpty() ? u"Most: %1"_s.arg(highest) : words);
}

void ChartView::paintEmpty(QPainter& painter) const {
    const Theme& theme = Theme::of(*this);
    const int side = widthForType(40);
    QRectF sign(0, 0, side, side);
    sign.moveCenter(QRectF(rect()).center() - QPointF(0, side * 0.4));
    paintIcon(painter, sign, IconName::chart, theme.dim);
    painter.setFont(typeFont(TypeSize::text));
    painter.setPen(theme.dim);
    const QRectF words(0, sign.bottom() + 8, width(), height() - sign.bottom() - 8);
    painter.drawText(words, Qt::AlignHCenter | Qt::AlignTop, u"No processing data yet"_s);
}

void ChartView::setCurrent(qsizetype index) {
    if (index == m_current) {
        return;
    }
    m_current = index;
    if (index >= 0) {
        setAccessibleDescription(currentWords());
    }
    update();
}

void ChartView::mouseMoveEvent(QMouseEvent* event) {
    const QList<Bar> all = bars();
    const qreal pitch =
        all.isEmpty() ? 1 : std::min(plot().width() / static_cast<qreal>(all.size()), mostPitch);
    const auto index = static_cast<qsizetype>(std::floor(event->position().x() / pitch));
    setCurrent(index < all.size() ? index : -1);
}

void ChartView::leaveEvent(QEvent*) {
    setCurrent(-1);
}

void ChartView::keyPressEvent(QKeyEvent* event) {
    const qsizetype last = bars().size() - 1;
    switch (event->key()) {
    case Qt::Key_Left:
        setCurrent(std::max<qsizetype>(m_current - 1, 0));
        break;
    case Qt::Key_Right:
        setCurrent(std::min(m_current + 1, last));
        break;
    case Qt::Key_Home:
        setCurrent(0);
        break;
    case Qt::Key_End:
        setCurrent(last);
        break;
    default:
        QWidget::keyPressEvent(event);
    }
}

void ChartView::focusInEvent(QFocusEvent* event) {
    QWidget::focusInEvent(event);
    if (event->reason() != Qt::MouseFocusReason) {
        setCurrent(bars().size() - 1);
    }
}

void ChartView::focusOutEvent(QFocusEvent* event) {
    QWidget::focusOutEvent(event);
    setCurrent(-1);
}

} // namespace ostrelle
