// SPDX-License-Identifier: GPL-3.0-or-later
#include "shell/panel/LastMessageLine.h"

#include "shell/toolkit/Theme.h"
#include "state/PanelProgress.h"

namespace ostrelle {

LastMessageLine::LastMessageLine(const StatusStore& status, QWidget* parent)
    : ElidedLabel({}, Qt::ElideMiddle, parent), m_status(status) {
    setObjectName(QStringLiteral("lastMessage"));
    setFont(typeFont(TypeSize::small));
    setForegroundRole(QPalette::PlaceholderText);
    connect(&status, &StatusStore::lastMessageChanged, this, &LastMessageLine::showMessage);
    connect(&status, &StatusStore::isProcessingChanged, this, &LastMessageLine::showMessage);
    showMessage();
}

void LastMessageLine::showMessage() {
    const QString message = lastMessageLine(m_status).value_or(QString());
    setText(message);
    setToolTip(message);
    setVisible(!message.isEmpty());
}

} // namespace ostrelle
