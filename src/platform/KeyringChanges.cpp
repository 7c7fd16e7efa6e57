// SPDX-License-Identifier: GPL-3.0-or-later
#include "platform/KeyringChanges.h"

namespace ostrelle {

using namespace Qt::StringLiterals;

const QString KeyringChanges::service = u"org.freedesktop.secrets"_s;

KeyringChanges::KeyringChanges(QDBusConnection bus)
    : m_owner(service, bus, QDBusServiceWatcher::WatchForOwnerChange) {
    connect(&m_owner, &QDBusServiceWatcher::serviceOwnerChanged, this, &KeyringChanges::note);
    // Keyrings differ in which of the two they send at an unlock.
    bus.connect(service, {}, u"org.freedesktop.Secret.Service"_s, u"CollectionChanged"_s, this, SLOT(note()));
    bus.connect(service, {}, u"org.freedesktop.DBus.Properties"_s, u"PropertiesChanged"_s, this,
                SLOT(note()));
}

Event KeyringChanges::next() {
    if (m_next.hasHappened()) {
        m_next = Event();
    }
    return m_next;
}

void KeyringChanges::note() {
    m_next.happen();
}

} // namespace ostrelle
