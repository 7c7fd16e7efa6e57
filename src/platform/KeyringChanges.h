// SPDX-License-Identifier: GPL-3.0-or-later
#pragma once

#include "core/Event.h"

#include <QDBusConnection>
#include <QDBusServiceWatcher>
#include <QObject>
#include <QString>

namespace ostrelle {

/// Watches for the desktop's keyring being locked, unlocked or restarted.
class KeyringChanges : public QObject {
    Q_OBJECT

public:
    static const QString service;

    explicit KeyringChanges(QDBusConnection bus);

    /// Happens at the first change since the last call. Several changes may count as one.
    Event next();

private Q_SLOTS: // which the bus looks up by name
    void note();

private:
    QDBusServiceWatcher m_owner;
    Event m_next;
};

} // namespace ostrelle
