// SPDX-License-Identifier: GPL-3.0-or-later
#pragma once

#include <QDBusConnection>
#include <QDBusServiceWatcher>
#include <QObject>
#include <QString>

namespace ostrelle {

/// Tells whenever the desktop's keyring may have been locked or unlocked, or has been started anew.
class KeyringChanges : public QObject {
    Q_OBJECT

public:
    static const QString service;

    explicit KeyringChanges(QDBusConnection bus);

    /// How many changes there have been so far.
    quint64 count() const { return m_count; }

Q_SIGNALS:
    void changed();

private Q_SLOTS: // which the bus looks for by its name
    void note();

private:
    QDBusServiceWatcher m_owner;
    quint64 m_count = 0;
};

} // namespace ostrelle
