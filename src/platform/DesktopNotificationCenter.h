// SPDX-License-Identifier: GPL-3.0-or-later
#pragma once

#include "platform/NotificationCenter.h"

#include <QCoroTask>
#include <QDBusConnection>
#include <QDBusMessage>
#include <QObject>
#include <QSet>
#include <QString>
#include <QVariant>
#include <chrono>
#include <optional>
#include <utility>

namespace ostrelle {

/// The sender shown on the desktop.
struct NotifyingProgram {
    QString name;           ///< as users know it
    QString desktopEntry;   ///< without its extension; also the icon's name
    bool hasWindow = false; ///< a click on a message is of use
};

/// The desktop's notification service: org.freedesktop.Notifications version 1.2 (freedesktop.org) on the
/// session bus. It is available when it runs or when the bus can start it. Must outlive its tasks.
class DesktopNotificationCenter : public QObject, public NotificationCenter {
    Q_OBJECT

public:
    /// `patience` is how long to wait for each answer of the bus or the service.
    explicit DesktopNotificationCenter(NotifyingProgram program,
                                       std::chrono::milliseconds patience = std::chrono::seconds(5))
        : m_program(std::move(program)), m_patience(patience) {}

    QCoro::Task<bool> isAvailable() override;
    QCoro::Task<> post(DesktopNotification notification) override;

Q_SIGNALS:
    /// The user has clicked on a message of this program. The token, if the desktop gave one, lets a window
    /// come to the front (xdg-activation).
    void clicked(const QByteArray& activationToken);

private Q_SLOTS:
    void takeAction(uint id, const QString& action);
    void takeToken(uint id, const QString& token);
    void forget(uint id, uint reason);

private:
    void hearClicks();
    /// Returns the first value of the answer. Throws Error.
    QCoro::Task<QVariant> call(QDBusMessage message);

    std::optional<QDBusConnection> m_bus; // once it is connected
    QSet<uint> m_shown;                   // messages of this program that the user can still click on
    QByteArray m_token;                   // comes before the click
    NotifyingProgram m_program;
    std::chrono::milliseconds m_patience;
};

} // namespace ostrelle
