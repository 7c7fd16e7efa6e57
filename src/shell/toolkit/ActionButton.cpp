// SPDX-License-Identifier: GPL-3.0-or-later
#include "shell/toolkit/ActionButton.h"

namespace ostrelle {

using namespace Qt::StringLiterals;

ActionButton::ActionButton(const QString& words, ActionKind kind, ActionSize size, QWidget* parent)
    : QPushButton(parent), m_kind(kind), m_size(size) {
    const bool wide = size == ActionSize::wide;
    setSizePolicy(wide ? QSizePolicy::Expanding : QSizePolicy::Fixed, QSizePolicy::Fixed);
    setCursor(kind == ActionKind::link ? Qt::PointingHandCursor : Qt::ArrowCursor);
    setWords(words);
}

void ActionButton::setWords(const QString& words) {
    setText(QString(words).replace(u'&', u"&&"_s));
}

QString ActionButton::kindName() const {
    switch (m_kind) {
    case ActionKind::main:
        return u"main"_s;
    case ActionKind::destroying:
        return u"destroying"_s;
    case ActionKind::link:
        return u"link"_s;
    case ActionKind::menu:
        return u"menu"_s;
    case ActionKind::normal:
        break;
    }
    return u"normal"_s;
}

bool ActionButton::isWide() const {
    return m_size == ActionSize::wide;
}

} // namespace ostrelle
