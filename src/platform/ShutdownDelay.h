// SPDX-License-Identifier: GPL-3.0-or-later
#pragma once

#include <QCoroTask>
#include <QDBusConnection>
#include <QDBusMessage>
#include <QDBusUnixFileDescriptor>
#include <QObject>
#include <QPointer>
#include <QString>
#include <chrono>
#include <optional>

namespace ostrelle {

/// While there is work to finish, a shutdown waits for it: for the few seconds that the machine's logind
/// (org.freedesktop.login1) grants. Nothing happens where there is no logind.
class ShutdownDelay : public QObject {
    Q_OBJECT

public:
    /// `why` is what a user who asks for the reasons is shown. Connecting and each question take at most
    /// `patience`.
    explicit ShutdownDelay(QString why, std::chrono::milliseconds patience = std::chrono::seconds(5));

    /// Whether there is work to finish. Returns at once.
    void setNeeded(bool isNeeded);

Q_SIGNALS:
    /// The machine shuts down as soon as the work is finished, or patience runs out.
    void shuttingDown();

private Q_SLOTS:
    void prepareForShutdown(bool isStarting, const QDBusMessage& message);

private:
    static QCoro::Task<> connectTo(QPointer<ShutdownDelay> delay);
    static QCoro::Task<> ask(QPointer<ShutdownDelay> delay);

    QString m_why;
    std::chrono::milliseconds m_patience;
    std::optional<QDBusConnection> m_bus;
    bool m_isNeeded = false;
    bool m_isAsking = false;
    QString m_logind; ///< its name on the bus: anybody could send a signal that looks like its own
    QDBusUnixFileDescriptor m_lock; ///< holds up the shutdown until it is closed
};

} // namespace ostrelle
