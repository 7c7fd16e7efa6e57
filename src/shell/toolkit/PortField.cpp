// SPDX-License-Identifier: GPL-3.0-or-later
#include "shell/toolkit/PortField.h"

#include <QRegularExpressionValidator>

namespace ostrelle {

using namespace Qt::StringLiterals;

namespace {

constexpr int mostPort = 65535;

} // namespace

PortField::PortField(QWidget* parent) : QLineEdit(parent) {
    setInputMethodHints(Qt::ImhDigitsOnly);
    // Accepts an empty field too: input that a validator finds unfinished would never be reset.
    setValidator(new QRegularExpressionValidator(QRegularExpression(u"[0-9]{0,5}"_s), this));
    connect(this, &QLineEdit::textEdited, this, &PortField::enter);
    connect(this, &QLineEdit::editingFinished, this, &PortField::putBack);
}

void PortField::setPort(qint64 port) {
    m_port = port;
    if (text().toLongLong() != port) { // keeps the caret where the user is typing
        setText(QString::number(port));
    }
}

void PortField::enter(const QString& text) {
    const int port = text.toInt();
    if (port >= 1 && port <= mostPort) {
        m_port = port;
        Q_EMIT entered(port);
    }
}

void PortField::putBack() {
    const QString stored = QString::number(m_port);
    if (text() != stored) {
        setText(stored);
    }
}

} // namespace ostrelle
