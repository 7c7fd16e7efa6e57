// SPDX-License-Identifier: GPL-3.0-or-later
#pragma once

#include <QAccessible>

class QWidget;

namespace ostrelle {

// What Qt tells screen readers of a plain widget is "filler", and nothing at all of a popup. These functions
// must be called before anybody asks for the widget, best in its constructor.

/// Gives the widget a role of its own. A widget with a role also shows its open popovers among its children.
void setAccessibleRole(QWidget& widget, QAccessible::Role role);

bool hasAccessibleRole(const QWidget& widget);

/// Shows the guest among the children of the host, which has a role, too.
void adoptAccessible(QWidget& host, QWidget& guest);

} // namespace ostrelle
