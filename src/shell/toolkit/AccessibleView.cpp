// SPDX-License-Identifier: GPL-3.0-or-later
#include "shell/toolkit/AccessibleView.h"

#include "shell/toolkit/Popover.h"

#include <QAbstractButton>
#include <QAccessibleWidget>
#include <QVariant>

namespace ostrelle {

namespace {

constexpr const char* roleProperty = "accessibleRole";
constexpr const char* guestProperty = "accessibleGuest";

/// A widget with a role, and with guests after its own children.
class ViewAccessible : public QAccessibleWidget {
public:
    using QAccessibleWidget::QAccessibleWidget;

    int childCount() const override {
        return QAccessibleWidget::childCount() + static_cast<int>(guests().size());
    }
    QAccessibleInterface* child(int index) const override {
        const int own = QAccessibleWidget::childCount();
        return index < own ? QAccessibleWidget::child(index)
                           : QAccessible::queryAccessibleInterface(guests().value(index - own));
    }
    int indexOfChild(const QAccessibleInterface* child) const override {
        const int own = QAccessibleWidget::indexOfChild(child);
        const auto guest = guests().indexOf(qobject_cast<QWidget*>(child->object()));
        return own >= 0 || guest < 0 ? own : QAccessibleWidget::childCount() + static_cast<int>(guest);
    }

private:
    QWidgetList guests() const {
        QWidgetList found;
        if (auto* guest = widget()->property(guestProperty).value<QWidget*>()) {
            found.append(guest);
        }
        const auto popovers = widget()->findChildren<Popover*>();
        for (Popover* popover : popovers) {
            if (popover->isVisible() && Popover::hostOf(*popover) == widget()) {
                found.append(popover);
            }
        }
        return found;
    }
};

/// A popup that belongs to the view of its anchor.
class PopoverAccessible : public QAccessibleWidget {
public:
    using QAccessibleWidget::QAccessibleWidget;

    QAccessibleInterface* parent() const override {
        return QAccessible::queryAccessibleInterface(Popover::hostOf(*static_cast<Popover*>(widget())));
    }
};

/// A button that is on or off, in the extent that it is drawn in: Qt tells that of the style's own check box.
class CheckableAccessible : public QAccessibleWidget {
public:
    using QAccessibleWidget::QAccessibleWidget;

    QAccessible::State state() const override {
        QAccessible::State state = QAccessibleWidget::state();
        state.checkable = true;
        state.checked = control().isChecked();
        return state;
    }
    QStringList actionNames() const override { return {toggleAction(), setFocusAction()}; }
    void doAction(const QString& name) override {
        if (name == toggleAction() || name == pressAction()) {
            control().click();
        } else {
            QAccessibleWidget::doAction(name);
        }
    }

private:
    QAbstractButton& control() const { return *static_cast<QAbstractButton*>(widget()); }
};

QAccessibleInterface* makeAccessible(const QString&, QObject* object) {
    auto* widget = qobject_cast<QWidget*>(object);
    if (widget == nullptr || !hasAccessibleRole(*widget)) {
        return nullptr; // Qt's own will do
    }
    const auto role = static_cast<QAccessible::Role>(widget->property(roleProperty).toInt());
    if (qobject_cast<Popover*>(widget) != nullptr) {
        return new PopoverAccessible(widget, role);
    }
    if (qobject_cast<QAbstractButton*>(widget) != nullptr) {
        return new CheckableAccessible(widget, role);
    }
    return new ViewAccessible(widget, role);
}

} // namespace

void setAccessibleRole(QWidget& widget, QAccessible::Role role) {
    [[maybe_unused]] static const bool isInstalled = (QAccessible::installFactory(makeAccessible), true);
    widget.setProperty(roleProperty, static_cast<int>(role));
}

bool hasAccessibleRole(const QWidget& widget) {
    return widget.property(roleProperty).isValid();
}

void adoptAccessible(QWidget& host, QWidget& guest) {
    host.setProperty(guestProperty, QVariant::fromValue(&guest));
}

} // namespace ostrelle
