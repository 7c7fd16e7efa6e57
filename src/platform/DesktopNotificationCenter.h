// SPDX-License-Identifier: GPL-3.0-or-later
#pragma once

#include "platform/NotificationCenter.h"

#include <QDBusConnection>
#include <QDBusMessage>
#include <QString>
#include <QVariant>
#include <chrono>
#include <optional>
#include <utility>

namespace ostrelle {

/// Whom the desktop names as the sender.
struct NotifyingProgram {
    QString name;         ///< for people
    QString desktopEntry; ///< without its extension
};

/// The notification service of the desktop: org.freedesktop.Notifications on the session bus, in its
/// version 1.2 (freedesktop.org). Available is a service that runs or that the bus can start. It must
/// outlive its tasks.
class DesktopNotificationCenter : public NotificationCenter {
public:
    /// `patience` is how long each answer of the bus or the service may take.
    explicit DesktopNotificationCenter(NotifyingProgram program,
                                       std::chrono::milliseconds patience = std::chrono::seconds(5))
        : m_program(std::move(program)), m_patience(patience) {}

    QCoro::Task<bool> isAvailable() override;
    QCoro::Task<> post(DesktopNotification notification) override;

private:
    /// The first value of the answer. Throws Error.
    QCoro::Task<QVariant> call(QDBusMessage message);

    std::optional<QDBusConnection> m_bus; // once it is connected
    NotifyingProgram m_program;
    std::chrono::milliseconds m_patience;
};

} // namespace ostrelle
