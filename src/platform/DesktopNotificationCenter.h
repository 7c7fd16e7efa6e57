// SPDX-License-Identifier: GPL-3.0-or-later
#pragma once

#include "platform/NotificationCenter.h"

#include <QCoroTask>
#include <QDBusConnection>
#include <QDBusMessage>
#include <QString>
#include <QVariant>
#include <chrono>
#include <optional>
#include <utility>

namespace ostrelle {

/// The sender shown on the desktop.
struct NotifyingProgram {
    QString name;         ///< as users know it
    QString desktopEntry; ///< without its extension
};

/// The desktop's notification service: org.freedesktop.Notifications version 1.2 (freedesktop.org) on the
/// session bus. It is available when it runs or when the bus can start it. Must outlive its tasks.
class DesktopNotificationCenter : public NotificationCenter {
public:
    /// `patience` is how long to wait for each answer of the bus or the service.
    explicit DesktopNotificationCenter(NotifyingProgram program,
                                       std::chrono::milliseconds patience = std::chrono::seconds(5))
        : m_program(std::move(program)), m_patience(patience) {}

    QCoro::Task<bool> isAvailable() override;
    QCoro::Task<> post(DesktopNotification notification) override;

private:
    /// Returns the first value of the answer. Throws Error.
    QCoro::Task<QVariant> call(QDBusMessage message);

    std::optional<QDBusConnection> m_bus; // once it is connected
    NotifyingProgram m_program;
    std::chrono::milliseconds m_patience;
};

} // namespace ostrelle
