// SPDX-License-Identifier: GPL-3.0-or-later
#pragma once

#include "support/Await.h"

#include <gtest/gtest.h>

#include <QDBusConnection>
#include <QDBusMessage>
#include <QDBusVirtualObject>
#include <functional>

namespace ostrelle {

/// A test that runs only on its own bus: see with-keyring, with-notifications and without-secret-service
/// beside this file.
class PrivateSessionTest : public testing::Test {
protected:
    void SetUp() override {
        if (!qEnvironmentVariableIsSet("OSTRELLE_PRIVATE_SESSION")) {
            GTEST_SKIP() << "this is the user's own session";
        }
    }
};

/// A service on the session bus that gives the prepared answer, or none.
class FakeBusService : public QDBusVirtualObject {
public:
    using Answer = std::function<QDBusMessage(const QDBusMessage& question)>;

    FakeBusService(QString name, const QString& path, Answer answer)
        : m_name(std::move(name)), m_answer(std::move(answer)) {
        EXPECT_TRUE(bus.registerVirtualObject(path, this));
        EXPECT_TRUE(bus.registerService(m_name));
    }
    ~FakeBusService() override {
        bus.unregisterService(m_name);
        QDBusConnection::disconnectFromBus(QStringLiteral("service"));
    }

    QString introspect(const QString&) const override { return {}; }
    bool handleMessage(const QDBusMessage& message, const QDBusConnection& connection) override {
        asked.append(message);
        message.setDelayedReply(true);
        return !m_answer || connection.send(m_answer(message));
    }

    QList<QDBusMessage> asked;

protected:
    QDBusConnection bus =
        QDBusConnection::connectToBus(QDBusConnection::SessionBus, QStringLiteral("service"));

private:
    QString m_name;
    Answer m_answer;
};

/// Calls a method on the session bus and expects an answer.
inline QVariantList answerOf(QDBusMessage call, const QVariantList& arguments) {
    call.setArguments(arguments);
    const QDBusMessage answer = QDBusConnection::sessionBus().call(call);
    EXPECT_EQ(answer.type(), QDBusMessage::ReplyMessage) << answer.errorMessage().toStdString();
    return answer.arguments();
}

} // namespace ostrelle
