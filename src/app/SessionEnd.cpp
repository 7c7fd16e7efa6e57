// SPDX-License-Identifier: GPL-3.0-or-later
#include "app/SessionEnd.h"

#include <QCoreApplication>
#include <QEvent>

namespace ostrelle {

using namespace Qt::StringLiterals;

SessionEnd::SessionEnd(StatusStore& status) : m_shutdown(u"Captions are being written."_s) {
    QCoreApplication::instance()->installEventFilter(this);
    connect(&m_shutdown, &ShutdownDelay::shuttingDown, this, &SessionEnd::ending);
    const auto follow = [this, &status] { m_shutdown.setNeeded(status.isProcessing()); };
    connect(&status, &StatusStore::isProcessingChanged, this, follow);
    follow();
}

/// The session manager's last word arrives as this event.
bool SessionEnd::eventFilter(QObject* watched, QEvent* event) {
    if (event->type() == QEvent::Quit && watched == QCoreApplication::instance()) {
        Q_EMIT ending();
        return true;
    }
    return QObject::eventFilter(watched, event);
}

} // namespace ostrelle
