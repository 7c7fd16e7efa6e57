// SPDX-License-Identifier: GPL-3.0-or-later
#include "shell/toolkit/SegmentedControl.h"

#include "shell/toolkit/Theme.h"

#include <QFontMetrics>
#include <QHBoxLayout>
#include <QPainter>
#include <QPainterPath>
#include <QRadioButton>

namespace ostrelle {

namespace {

constexpr int segmentPadding = 13;
constexpr double controlRadius = 8;

QPainterPath outlineOf(const QRectF& rectangle) {
    QPainterPath path;
    path.addRoundedRect(rectangle.adjusted(0.5, 0.5, -0.5, -0.5), controlRadius, controlRadius);
    return path;
}

/// One choice. The underlying radio button provides keys, exclusiveness and a name for screen readers.
class Segment : public QRadioButton {
public:
    using QRadioButton::QRadioButton;

    QSize sizeHint() const override {
        // As wide as when chosen, so that the others do not move.
        const QFontMetrics metrics(chosenFont());
        return {metrics.horizontalAdvance(text()) + 2 * segmentPadding, metrics.height() + 13};
    }

    QSize minimumSizeHint() const override { return sizeHint(); }

protected:
    bool hitButton(const QPoint& position) const override { return rect().contains(position); }

    void paintEvent(QPaintEvent*) override {
        const Theme& theme = Theme::of(*this);
        QPainter painter(this);
        painter.setRenderHint(QPainter::Antialiasing);
        painter.setOpacity(isEnabled() ? 1 : measure::disabledOpacity);
        if (isChecked()) {
            painter.fillPath(ownPart(), theme.accent);
        }
        if (hasFocus()) {
            painter.setPen(QPen(isChecked() ? theme.onAccent : theme.accent, 1.5));
            painter.drawRoundedRect(QRectF(rect()).adjusted(3.5, 3.5, -3.5, -3.5), 5, 5);
        }
        painter.setFont(isChecked() ? chosenFont() : font());
        painter.setPen(isChecked() ? theme.onAccent : theme.text);
        painter.drawText(rect(), Qt::AlignCenter, text());
    }

private:
    QFont chosenFont() const {
        QFont chosen = font();
        chosen.setWeight(QFont::DemiBold);
        return chosen;
    }

    /// The part of the control's rounded outline around this segment.
    QPainterPath ownPart() const {
        QPainterPath part;
        part.addRect(rect());
        return part.intersected(outlineOf(QRectF(parentWidget()->rect()).translated(-pos())));
    }
};

} // namespace

SegmentedControl::SegmentedControl(const QStringList& names, const QString& objectName, QWidget* parent)
    : QWidget(parent) {
    setObjectName(objectName);
    setSizePolicy(QSizePolicy::Fixed, QSizePolicy::Fixed);
    auto* layout = new QHBoxLayout(this);
    layout->setContentsMargins(0, 0, 0, 0);
    layout->setSpacing(1); // for the line between two segments
    for (qsizetype index = 0; index < names.size(); ++index) {
        auto* segment = new Segment(names.at(index), this);
        segment->setObjectName(objectName + QString::number(index));
        segment->setChecked(index == 0);
        m_segments.addButton(segment, static_cast<int>(index));
        layout->addWidget(segment);
    }
    if (!names.isEmpty()) {
        setFocusProxy(m_segments.button(0));
    }
    connect(&m_segments, &QButtonGroup::idToggled, this, [this](int index, bool checked) {
        if (checked && index != m_current) {
            m_current = index;
            setFocusProxy(m_segments.button(index));
            Q_EMIT chosen(index);
        }
    });
}

int SegmentedControl::currentIndex() const {
    return m_current;
}

void SegmentedControl::setCurrentIndex(int index) {
    if (QAbstractButton* segment = m_segments.button(index)) {
        m_current = index;
        setFocusProxy(segment);
        segment->setChecked(true);
    }
}

void SegmentedControl::paintEvent(QPaintEvent*) {
    const Theme& theme = Theme::of(*this);
    QPainter painter(this);
    painter.setRenderHint(QPainter::Antialiasing);
    painter.setPen(theme.line);
    painter.setBrush(theme.field);
    painter.drawPath(outlineOf(rect()));
    for (int index = 1; index < m_segments.buttons().size(); ++index) {
        painter.fillRect(m_segments.button(index)->x() - 1, 1, 1, height() - 2, theme.line);
    }
}

} // namespace ostrelle
