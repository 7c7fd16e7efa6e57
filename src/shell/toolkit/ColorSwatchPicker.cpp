// SPDX-License-Identifier: GPL-3.0-or-later
#include "shell/toolkit/ColorSwatchPicker.h"

#include "core/TeamColor.h"
#include "shell/toolkit/AccessibleView.h"
#include "shell/toolkit/Icon.h"
#include "shell/toolkit/Popover.h"
#include "shell/toolkit/Theme.h"

#include <QGridLayout>
#include <QKeyEvent>
#include <QLabel>
#include <QPainter>
#include <QRadioButton>
#include <algorithm>

namespace ostrelle {

using namespace Qt::StringLiterals;

namespace {

constexpr int columns = 7;
constexpr int swatchSide = 32; // of a swatch in the popover
constexpr double swatchDiameter = 22;
constexpr double shownDiameter = 16;
constexpr int shownPadding = 6;
constexpr int arrow = 12;

QColor colorOf(QStringView name) {
    const std::array<double, 3> swatch = swatchColor(name);
    return QColor::fromRgbF(static_cast<float>(swatch[0]), static_cast<float>(swatch[1]),
                            static_cast<float>(swatch[2]));
}

/// The disc of a colour; a thin edge keeps white on white and black on black visible.
void paintSwatch(QPainter& painter, QPointF center, double diameter, const QColor& color,
                 const Theme& theme) {
    QColor edge = theme.text;
    edge.setAlphaF(0.3F);
    painter.setPen(edge);
    painter.setBrush(color);
    painter.drawEllipse(center, (diameter - 1) / 2, (diameter - 1) / 2);
}

/// One of the colours to choose from.
class Swatch : public QRadioButton {
public:
    explicit Swatch(const QString& name) : m_color(colorOf(name)) {
        setAutoExclusive(false);                            // the arrows move the focus; only a press chooses
        setAccessibleRole(*this, QAccessible::RadioButton); // which Qt takes for a check box then
        setObjectName(u"swatch"_s + name);
        setAccessibleName(name);
        setToolTip(name);
        setFixedSize(swatchSide, swatchSide);
        setAttribute(Qt::WA_Hover);
    }

protected:
    bool hitButton(const QPoint& position) const override { return rect().contains(position); }

    void enterEvent(QEnterEvent* event) override {
        QRadioButton::enterEvent(event);
        setFocus(Qt::MouseFocusReason); // so that its name is shown below
    }

    void keyPressEvent(QKeyEvent* event) override {
        switch (event->key()) {
        case Qt::Key_Left:
            return moveFocus(-1);
        case Qt::Key_Right:
            return moveFocus(1);
        case Qt::Key_Up:
            return moveFocus(-columns);
        case Qt::Key_Down:
            return moveFocus(columns);
        case Qt::Key_Return:
        case Qt::Key_Enter:
            return click();
        default:
            QRadioButton::keyPressEvent(event);
        }
    }

    void paintEvent(QPaintEvent*) override {
        const Theme& theme = Theme::of(*this);
        QPainter painter(this);
        painter.setRenderHint(QPainter::Antialiasing);
        const QRectF area(rect());
        paintSwatch(painter, area.center(), swatchDiameter, m_color, theme);
        if (isChecked()) {
            QRectF sign(0, 0, 14, 14);
            sign.moveCenter(area.center());
            paintIcon(painter, sign, IconName::check, m_color.lightnessF() > 0.6F ? Qt::black : Qt::white);
        }
        if (hasFocus()) {
            painter.setBrush(Qt::NoBrush);
            painter.setPen(QPen(theme.accent, measure::focusRing));
            painter.drawEllipse(area.center(), swatchDiameter / 2 + 2.5, swatchDiameter / 2 + 2.5);
        }
    }

private:
    void moveFocus(int by) {
        const auto swatches = parentWidget()->findChildren<QRadioButton*>(Qt::FindDirectChildrenOnly);
        const qsizetype index = swatches.indexOf(this) + by;
        if (index >= 0 && index < swatches.size()) {
            swatches.at(index)->setFocus(Qt::TabFocusReason);
        }
    }

    QColor m_color;
};

/// Shows the name of the swatch with the focus below them all.
class SwatchName : public QObject {
public:
    explicit SwatchName(QLabel* label) : QObject(label), m_label(label) {}

    bool eventFilter(QObject* watched, QEvent* event) override {
        if (event->type() == QEvent::FocusIn) {
            m_label->setText(static_cast<QWidget*>(watched)->accessibleName());
        }
        return false;
    }

private:
    QLabel* m_label;
};

} // namespace

ColorSwatchPicker::ColorSwatchPicker(QWidget* parent) : QPushButton(parent) {
    setSizePolicy(QSizePolicy::Fixed, QSizePolicy::Fixed);
    setAttribute(Qt::WA_Hover);
    setFont(typeFont(TypeSize::small));
    setColorName(teamColors().front().name.toString());
    connect(this, &QPushButton::clicked, this, &ColorSwatchPicker::openSwatches);
}

QString ColorSwatchPicker::colorName() const {
    return m_name;
}

void ColorSwatchPicker::setColorName(const QString& name) {
    m_name = name;
    setText(name);
    setToolTip(name);
    setAccessibleDescription(name);
    update();
}

Popover* ColorSwatchPicker::popover() const {
    return m_popover;
}

QSize ColorSwatchPicker::sizeHint() const {
    int longest = 0;
    for (const TeamColor& color : teamColors()) {
        longest = std::max(longest, fontMetrics().horizontalAdvance(color.name.toString()));
    }
    const int signs = static_cast<int>(shownDiameter) + arrow + 2 * shownPadding;
    return {2 * shownPadding + signs + longest, std::max(fontMetrics().height() + 8, 29)};
}

QSize ColorSwatchPicker::minimumSizeHint() const {
    return sizeHint();
}

void ColorSwatchPicker::paintEvent(QPaintEvent*) {
    const Theme& theme = Theme::of(*this);
    QPainter painter(this);
    painter.setRenderHint(QPainter::Antialiasing);
    painter.setOpacity(isEnabled() ? 1 : measure::disabledOpacity);
    const QRectF area = QRectF(rect()).adjusted(1, 1, -1, -1);
    painter.setPen(hasFocus() ? QPen(theme.accent, measure::focusRing) : QPen(Qt::NoPen));
    painter.setBrush(underMouse() || m_popover != nullptr ? theme.field : QColor(Qt::transparent));
    painter.drawRoundedRect(area, measure::controlRadius - 1, measure::controlRadius - 1);

    const double radius = shownDiameter / 2;
    paintSwatch(painter, {shownPadding + radius, height() / 2.0}, shownDiameter, colorOf(m_name), theme);
    const int wordsLeft = shownPadding * 2 + static_cast<int>(shownDiameter);
    const int arrowLeft = width() - shownPadding - arrow;
    painter.setPen(theme.dim);
    const QString words = fontMetrics().elidedText(m_name, Qt::ElideRight, arrowLeft - wordsLeft);
    painter.drawText(QRect(wordsLeft, 0, arrowLeft - wordsLeft, height()), Qt::AlignVCenter, words);
    paintIcon(painter, QRectF(arrowLeft, (height() - arrow) / 2.0, arrow, arrow), IconName::chevronDown,
              theme.dim);
}

void ColorSwatchPicker::keyPressEvent(QKeyEvent* event) {
    switch (event->key()) {
    case Qt::Key_Up:
        return step(-1);
    case Qt::Key_Down:
        return step(1);
    case Qt::Key_Return:
    case Qt::Key_Enter:
        return click();
    default:
        QPushButton::keyPressEvent(event);
    }
}

void ColorSwatchPicker::openSwatches() {
    if (m_popover != nullptr) {
        return;
    }
    auto* content = new QWidget;
    auto* grid = new QGridLayout(content);
    grid->setContentsMargins(8, 8, 8, 8);
    grid->setSpacing(0);
    QLabel* name = makeLabel(m_name, TypeSize::small, TextTone::dim);
    name->setAlignment(Qt::AlignCenter);
    m_popover = new Popover(content, this);
    m_popover->setAccessibleName(accessibleName());
    auto* nameShown = new SwatchName(name);
    QWidget* current = nullptr;
    int index = 0;
    for (const TeamColor& color : teamColors()) {
        auto* swatch = new Swatch(color.name.toString());
        swatch->setChecked(color.name == m_name);
        swatch->installEventFilter(nameShown);
        grid->addWidget(swatch, index / columns, index % columns);
        connect(swatch, &QRadioButton::clicked, this, [this, swatch] { choose(swatch->accessibleName()); });
        current = current == nullptr || swatch->isChecked() ? swatch : current;
        ++index;
    }
    grid->addWidget(name, grid->rowCount(), 0, 1, columns);
    m_popover->openAtAnchor();
    current->setFocus(Qt::PopupFocusReason);
}

void ColorSwatchPicker::choose(const QString& name) {
    if (m_popover != nullptr) {
        m_popover->close();
    }
    if (name != m_name) {
        setColorName(name);
        Q_EMIT chosen(name);
    }
}

void ColorSwatchPicker::step(int by) {
    const auto colors = teamColors();
    const auto current = std::ranges::find(colors, QStringView(m_name), &TeamColor::name);
    const auto index = (current - colors.begin()) + by;
    if (index >= 0 && index < std::ssize(colors)) {
        choose(colors[static_cast<size_t>(index)].name.toString());
    }
}

} // namespace ostrelle
