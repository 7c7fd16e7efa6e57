// SPDX-License-Identifier: GPL-3.0-or-later
#include "platform/ShutdownDelay.h"

#include "platform/PrivateSession.h"

#include <poll.h>
#include <unistd.h>

#include <QDBusUnixFileDescriptor>
#include <QSignalSpy>
#include <array>

namespace ostrelle {

using namespace Qt::StringLiterals;

namespace {

const QString logindPath = u"/org/freedesktop/login1"_s;

QDBusMessage prepareForShutdown(bool isStarting) {
    QDBusMessage signal =
        QDBusMessage::createSignal(logindPath, u"org.freedesktop.login1.Manager"_s, u"PrepareForShutdown"_s);
    signal.setArguments({isStarting});
    return signal;
}

/// Grants each lock as one end of a pipe: the other end tells when the lock is let go.
class Logind : public FakeBusService {
public:
    Logind()
        : FakeBusService(u"org.freedesktop.login1"_s, logindPath, [this](const QDBusMessage& question) {
            EXPECT_EQ(pipe(m_ends.data()), 0);
            const QDBusUnixFileDescriptor lock(m_ends[1]);
            close(m_ends[1]);
            return question.createReply(QVariant::fromValue(lock));
        }) {}

    bool isLockHeld() const {
        pollfd end{.fd = m_ends[0], .events = POLLIN, .revents = 0};
        return m_ends[0] >= 0 && poll(&end, 1, 0) == 0;
    }
    void tell(bool isStarting) { bus.send(prepareForShutdown(isStarting)); }

private:
    std::array<int, 2> m_ends{-1, -1};
};

class ShutdownDelayTest : public PrivateSessionTest {
protected:
    void SetUp() override {
        PrivateSessionTest::SetUp();
        qputenv("DBUS_SYSTEM_BUS_ADDRESS", qgetenv("DBUS_SESSION_BUS_ADDRESS"));
    }
};

} // namespace

TEST_F(ShutdownDelayTest, AShutdownWaitsJustAsLongAsThereIsWork) {
    Logind logind;
    ShutdownDelay delay(u"Captions are being written."_s);
    const QSignalSpy shuttingDown(&delay, &ShutdownDelay::shuttingDown);
    delay.setNeeded(true);
    waitUntil([&] { return logind.isLockHeld(); });
    EXPECT_EQ(
        logind.asked.constFirst().arguments(),
        (QVariantList{u"shutdown"_s, u"Ostrelle Captions"_s, u"Captions are being written."_s, u"delay"_s}));
    logind.tell(false);
    QDBusConnection::sessionBus().send(prepareForShutdown(true)); // from somebody else
    logind.tell(true);
    waitUntil([&] { return !shuttingDown.isEmpty(); });
    EXPECT_EQ(shuttingDown.count(), 1);
    EXPECT_TRUE(logind.isLockHeld());
    delay.setNeeded(false);
    waitUntil([&] { return !logind.isLockHeld(); });
    delay.setNeeded(true);
    waitUntil([&] { return logind.isLockHeld(); });
    EXPECT_EQ(logind.asked.size(), 2);
}

TEST_F(ShutdownDelayTest, ALockThatComesTooLateIsLetGo) {
    Logind logind;
    ShutdownDelay delay(u"why"_s);
    delay.setNeeded(true);
    waitUntil([&] { return !logind.asked.isEmpty(); });
    delay.setNeeded(false); // the answer is still on its way
    waitUntil([&] { return !logind.isLockHeld(); });
}

} // namespace ostrelle
