// SPDX-License-Identifier: GPL-3.0-or-later
#pragma once

#include "state/AnalyticsStore.h"

#include <QList>
#include <QRectF>
#include <QString>
#include <QWidget>

namespace ostrelle {

/// Bars of images over days. Where there are more days than bars have room, a bar stands for several.
/// Pointing at a bar, or the arrow keys, tells its days and count.
class ChartView : public QWidget {
    Q_OBJECT

public:
    explicit ChartView(QWidget* parent = nullptr);

    /// Oldest first.
    void setData(const QList<DayCount>& data);

    /// One bar of the chart.
    struct Bar {
        QString first; ///< its days, as "yyyy-MM-dd"
        QString last;
        qint64 count = 0;
    };
    QList<Bar> bars() const;
    /// The words on the bar with the focus or below the pointer; empty without one.
    QString currentWords() const;

    QSize sizeHint() const override;

protected:
    void paintEvent(QPaintEvent* event) override;
    void mouseMoveEvent(QMouseEvent* event) override;
    void leaveEvent(QEvent* event) override;
    void keyPressEvent(QKeyEvent* event) override;
    void focusInEvent(QFocusEvent* event) override;
    void focusOutEvent(QFocusEvent* event) override;

private:
    QRectF plot() const;
    QRectF rectangleOf(qsizetype index, const QList<Bar>& bars) const;
    void setCurrent(qsizetype index);
    void paintBars(QPainter& painter, const QList<Bar>& bars) const;
    void paintLabels(QPainter& painter, const QList<Bar>& bars) const;
    void paintEmpty(QPainter& painter) const;

    QList<DayCount> m_data;
    qsizetype m_current = -1;
};

} // namespace ostrelle
