// SPDX-License-Identifier: GPL-3.0-or-later
#pragma once

#include <QDBusConnection>
#include <QDBusServiceWatcher>
#include <QFuture>
#include <QObject>
#include <QPromise>
#include <QString>

namespace ostrelle {

/// Tells whenever the desktop's keyring may have been locked or unlocked, or has been started anew.
class KeyringChanges : public QObject {
    Q_OBJECT

public:
    static const QString service;

    explicit KeyringChanges(QDBusConnection bus);

    /// Ends with the first change since the last call. Several changes may come at once.
    QFuture<void> next();

private Q_SLOTS: // which the bus looks for by its name
    void note();

private:
    QDBusServiceWatcher m_owner;
    QPromise<void> m_next;
};

} // namespace ostrelle
