// SPDX-License-Identifier: GPL-3.0-or-later
#include "platform/ShutdownDelay.h"

#include "platform/BusConnection.h"

#include <QCoroDBusPendingCall>
#include <utility>

namespace ostrelle {

using namespace Qt::StringLiterals;

namespace {

const QString logindPath = u"/org/freedesktop/login1"_s;
const QString managerInterface = u"org.freedesktop.login1.Manager"_s;

} // namespace

ShutdownDelay::ShutdownDelay(QString why, std::chrono::milliseconds patience)
    : m_why(std::move(why)), m_patience(patience) {
    connectTo(this);
}

void ShutdownDelay::setNeeded(bool isNeeded) {
    m_isNeeded = isNeeded;
    if (!isNeeded) {
        m_lock = {};
    } else if (m_bus && !m_isAsking && !m_lock.isValid()) {
        ask(this);
    }
}

QCoro::Task<> ShutdownDelay::connectTo(QPointer<ShutdownDelay> delay) {
    const std::optional<QDBusConnection> bus = co_await systemBus(delay->m_patience);
    if (!delay || !bus || !bus->isConnected()) {
        co_return;
    }
    delay->m_bus = bus;
    // From any sender: to match one by name, Qt would block this thread waiting for the bus.
    delay->m_bus->connect({}, logindPath, managerInterface, u"PrepareForShutdown"_s, delay.data(),
                          SLOT(prepareForShutdown(bool, QDBusMessage)));
    delay->setNeeded(delay->m_isNeeded);
}

QCoro::Task<> ShutdownDelay::ask(QPointer<ShutdownDelay> delay) {
    delay->m_isAsking = true;
    QDBusMessage call = QDBusMessage::createMethodCall(u"org.freedesktop.login1"_s, logindPath,
                                                       managerInterface, u"Inhibit"_s);
    call.setArguments({u"shutdown"_s, u"Ostrelle Captions"_s, delay->m_why, u"delay"_s});
    const QDBusMessage answer =
        co_await delay->m_bus->asyncCall(call, static_cast<int>(delay->m_patience.count()));
    if (!delay) {
        co_return;
    }
    delay->m_isAsking = false;
    if (delay->m_isNeeded && answer.type() == QDBusMessage::ReplyMessage) {
        delay->m_lock = answer.arguments().value(0).value<QDBusUnixFileDescriptor>();
        delay->m_logind = answer.service();
    }
}

void ShutdownDelay::prepareForShutdown(bool isStarting, const QDBusMessage& message) {
    if (isStarting && m_lock.isValid() && message.service() == m_logind) {
        Q_EMIT shuttingDown();
    }
}

} // namespace ostrelle
