// SPDX-License-Identifier: GPL-3.0-or-later
#include "platform/KeyringChanges.h"

namespace ostrelle {

using namespace Qt::StringLiterals;

const QString KeyringChanges::service = u"org.freedesktop.secrets"_s;

KeyringChanges::KeyringChanges(QDBusConnection bus)
    : m_owner(service, bus, QDBusServiceWatcher::WatchForOwnerChange) {
    m_next.start();
    connect(&m_owner, &QDBusServiceWatcher::serviceOwnerChanged, this, &KeyringChanges::note);
    // Keyrings differ in which of the two they send at an unlock.
    bus.connect(service, {}, u"org.freedesktop.Secret.Service"_s, u"CollectionChanged"_s, this, SLOT(note()));
    bus.connect(service, {}, u"org.freedesktop.DBus.Properties"_s, u"PropertiesChanged"_s, this,
                SLOT(note()));
}

QFuture<void> KeyringChanges::next() {
    if (m_next.future().isFinished()) {
        m_next = QPromise<void>();
        m_next.start();
    }
    return m_next.future();
}

void KeyringChanges::note() {
    m_next.finish();
}

} // namespace ostrelle
