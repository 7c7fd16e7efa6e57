// SPDX-License-Identifier: GPL-3.0-or-later
#include "platform/DesktopNotificationCenter.h"

#include "core/Error.h"
#include "platform/BusConnection.h"

#include <QCoroDBusPendingCall>
#include <QDBusConnection>
#include <QDBusError>
#include <QDBusMessage>
#include <QStringList>
#include <QVariantMap>

namespace ostrelle {

using namespace Qt::StringLiterals;

namespace {

const QString notifications = u"org.freedesktop.Notifications"_s;
const QString notificationsPath = u"/org/freedesktop/Notifications"_s;
const QString defaultAction = u"default"_s; // a click on the message itself

QDBusMessage toBus(const QString& method) {
    return QDBusMessage::createMethodCall(u"org.freedesktop.DBus"_s, u"/org/freedesktop/DBus"_s,
                                          u"org.freedesktop.DBus"_s, method);
}

QDBusMessage toService(const QString& method) {
    return QDBusMessage::createMethodCall(notifications, notificationsPath, notifications, method);
}

QVariantMap hintsOf(const NotifyingProgram& program, const DesktopNotification& notification) {
    const bool isCritical = notification.interruption == DesktopNotification::Interruption::critical;
    const bool isAlarm = notification.sound == DesktopNotification::Sound::critical;
    return {{u"urgency"_s, QVariant::fromValue(static_cast<uchar>(isCritical ? 2 : 1))},
            {u"desktop-entry"_s, program.desktopEntry},
            {u"sound-name"_s, isAlarm ? u"dialog-warning"_s : u"message-new-instant"_s},
            {u"x-ostrelle-thread"_s, notification.threadIdentifier}};
}

/// For a service that reads markup in the body.
QString escaped(QString body) {
    return body.replace(u'&', u"&amp;"_s).replace(u'<', u"&lt;"_s).replace(u'>', u"&gt;"_s);
}

QDBusMessage notifyMessage(const NotifyingProgram& program, const DesktopNotification& notification,
                           const QString& body) {
    constexpr uint replacesNothing = 0; // a newer message of a thread does not replace the older one
    constexpr int timeOfTheService = -1;
    QDBusMessage message = toService(u"Notify"_s);
    const QStringList actions = program.hasWindow ? QStringList{defaultAction, u"Show"_s} : QStringList();
    message.setArguments({program.name, replacesNothing, program.desktopEntry, notification.title, body,
                          actions, hintsOf(program, notification), timeOfTheService});
    return message;
}

} // namespace

QCoro::Task<bool> DesktopNotificationCenter::isAvailable() {
    QDBusMessage hasOwner = toBus(u"NameHasOwner"_s);
    hasOwner.setArguments({notifications});
    const QVariant isRunning = co_await call(hasOwner);
    if (isRunning.toBool()) {
        co_return true;
    }
    const QVariant startable = co_await call(toBus(u"ListActivatableNames"_s));
    co_return startable.toStringList().contains(notifications);
}

QCoro::Task<> DesktopNotificationCenter::post(DesktopNotification notification) {
    const QVariant capabilities = co_await call(toService(u"GetCapabilities"_s));
    const bool isMarkup = capabilities.toStringList().contains(u"body-markup"_s);
    const QString body = isMarkup ? escaped(notification.body) : notification.body;
    const QVariant id = co_await call(notifyMessage(m_program, notification, body));
    m_shown.insert(id.toUInt());
}

void DesktopNotificationCenter::hearClicks() {
    const auto hear = [this](const QString& signal, const char* slot) {
        m_bus->connect(notifications, notificationsPath, notifications, signal, this, slot);
    };
    hear(u"ActivationToken"_s, SLOT(takeToken(uint, QString)));
    hear(u"ActionInvoked"_s, SLOT(takeAction(uint, QString)));
    hear(u"NotificationClosed"_s, SLOT(forget(uint, uint)));
}

/// Signals tell of the messages of all programs.
void DesktopNotificationCenter::takeAction(uint id, const QString& action) {
    if (m_shown.contains(id) && action == defaultAction) {
        Q_EMIT clicked(std::exchange(m_token, {}));
    }
}

void DesktopNotificationCenter::takeToken(uint id, const QString& token) {
    if (m_shown.contains(id)) {
        m_token = token.toUtf8();
    }
}

void DesktopNotificationCenter::forget(uint id, uint /*reason*/) {
    m_shown.remove(id);
}

QCoro::Task<QVariant> DesktopNotificationCenter::call(QDBusMessage message) {
    if (!m_bus) {
        m_bus = co_await sessionBus(m_patience);
        if (m_bus) {
            hearClicks();
        }
    }
    if (!m_bus) {
        throw Error(u"The session bus does not answer."_s);
    }
    const QDBusPendingCall pending = m_bus->asyncCall(message, static_cast<int>(m_patience.count()));
    const QDBusMessage answer = co_await pending;
    if (answer.type() != QDBusMessage::ReplyMessage) {
        throw Error(answer.errorMessage());
    }
    co_return answer.arguments().value(0);
}

} // namespace ostrelle
