// SPDX-License-Identifier: GPL-3.0-or-later
#include "shell/toolkit/SecureField.h"

#include "shell/toolkit/Icon.h"

#include <QKeyEvent>
#include <QToolButton>

namespace ostrelle {

using namespace Qt::StringLiterals;

namespace {

constexpr int eye = 24;

} // namespace

SecureField::SecureField(const QString& objectName, QWidget* parent)
    : QLineEdit(parent), m_reveal(new QToolButton(this)) {
    setObjectName(objectName);
    setTextMargins(0, 0, eye, 0);
    m_reveal->setFixedSize(eye, eye - 2);
    m_reveal->setIconSize({16, 16});
    m_reveal->setCheckable(true);
    m_reveal->setCursor(Qt::ArrowCursor);
    m_reveal->setFocusPolicy(Qt::TabFocus);
    connect(m_reveal, &QToolButton::toggled, this, &SecureField::setRevealed);
    connect(this, &QObject::objectNameChanged, m_reveal,
            [this](const QString& name) { m_reveal->setObjectName(name + u"Reveal"_s); });
    m_reveal->setObjectName(objectName + u"Reveal"_s);
    setRevealed(false);
}

bool SecureField::isRevealed() const {
    return echoMode() == QLineEdit::Normal;
}

void SecureField::setRevealed(bool revealed) {
    setEchoMode(revealed ? QLineEdit::Normal : QLineEdit::Password);
    m_reveal->setChecked(revealed);
    m_reveal->setIcon(icon(revealed ? IconName::eyeOff : IconName::eye));
    m_reveal->setToolTip(revealed ? u"Hide"_s : u"Show"_s);
    m_reveal->setAccessibleName(m_reveal->toolTip());
}

void SecureField::resizeEvent(QResizeEvent* event) {
    QLineEdit::resizeEvent(event);
    m_reveal->move(width() - m_reveal->width() - 4, (height() - m_reveal->height()) / 2);
}

/// Enter hands in the secret and nothing else: the window would go on to its next page. In an empty field it
/// is the window's.
void SecureField::keyPressEvent(QKeyEvent* event) {
    const bool isHandedIn =
        (event->key() == Qt::Key_Return || event->key() == Qt::Key_Enter) && !text().isEmpty();
    QLineEdit::keyPressEvent(event);
    if (isHandedIn) {
        event->accept();
    }
}

void SecureField::hideEvent(QHideEvent* event) {
    QLineEdit::hideEvent(event);
    setRevealed(false);
    Q_EMIT editingFinished(); // a closing window does not take the focus away
}

} // namespace ostrelle
