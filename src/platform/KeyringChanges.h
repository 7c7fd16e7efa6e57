// SPDX-License-Identifier: GPL-3.0-or-later
#pragma once

#include <QDBusConnection>
#include <QDBusServiceWatcher>
#include <QFuture>
#include <QObject>
#include <QPromise>
#include <QString>

namespace ostrelle {

/// Watches for the desktop's keyring being locked, unlocked or restarted.
class KeyringChanges : public QObject {
    Q_OBJECT

public:
    static const QString service;

    explicit KeyringChanges(QDBusConnection bus);

    /// Finishes at the first change since the last call. Several changes may count as one.
    QFuture<void> next();

private Q_SLOTS: // which the bus looks up by name
    void note();

private:
    QDBusServiceWatcher m_owner;
    QPromise<void> m_next;
};

} // namespace ostrelle
