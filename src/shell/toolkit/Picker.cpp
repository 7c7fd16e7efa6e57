// SPDX-License-Identifier: GPL-3.0-or-later
#include "shell/toolkit/Picker.h"

#include <QAbstractItemView>
#include <QStyledItemDelegate>
#include <QWheelEvent>

namespace ostrelle {

Picker::Picker(QWidget* parent) : QComboBox(parent) {
    setItemDelegate(new QStyledItemDelegate(this)); // the combo box's own ignores the style sheet
    setSizeAdjustPolicy(QComboBox::AdjustToContents);
    setSizePolicy(QSizePolicy::Fixed, QSizePolicy::Fixed);
    setFocusPolicy(Qt::StrongFocus);
    setMaxVisibleItems(14);
    setIconSize({16, 16}); // a larger one would make this picker taller than its neighbours
    view()->setIconSize(iconSize());
    view()->setTextElideMode(Qt::ElideNone);
}

void Picker::showPopup() {
    constexpr int padding = 24; // around the list and its items
    view()->setMinimumWidth(view()->sizeHintForColumn(0) + padding);
    QComboBox::showPopup();
}

void Picker::wheelEvent(QWheelEvent* event) {
    event->ignore();
}

} // namespace ostrelle
