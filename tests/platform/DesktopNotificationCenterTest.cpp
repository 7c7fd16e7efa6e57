// SPDX-License-Identifier: GPL-3.0-or-later
#include "platform/DesktopNotificationCenter.h"

#include "core/Error.h"
#include "platform/PrivateSession.h"
#include "support/Failure.h"

#include <QDBusArgument>

namespace ostrelle {

using namespace Qt::StringLiterals;

namespace {

using Interruption = DesktopNotification::Interruption;
using Sound = DesktopNotification::Sound;

const QString notifications = u"org.freedesktop.Notifications"_s;
const QString notificationsPath = u"/org/freedesktop/Notifications"_s;

const NotifyingProgram sender{.name = u"Captioner"_s, .desktopEntry = u"com.example.Captioner"_s};
const DesktopNotification failure{.title = u"Ostrelle Captioning Failed"_s,
                                  .body = u"Files: <A&B> \u00e9.jpg \U0001F4F7"_s,
                                  .threadIdentifier = u"ostrelle-processing"_s,
                                  .sound = Sound::critical,
                                  .interruption = Interruption::critical};

class DesktopNotificationCenterTest : public PrivateSessionTest {
protected:
    DesktopNotificationCenter center{sender};
};

/// Uses a python-dbusmock service.
class WithNotifications : public DesktopNotificationCenterTest {
protected:
    static QVariantList callMock(const QString& method, const QVariantList& arguments) {
        return answerOf(QDBusMessage::createMethodCall(notifications, notificationsPath,
                                                       u"org.freedesktop.DBus.Mock"_s, method),
                        arguments);
    }
    /// Replaces a method; `code` is Python.
    static void setMethod(const QString& name, const QString& in, const QString& out, const QString& code) {
        callMock(u"AddMethod"_s, {notifications, name, in, out, code});
    }
    /// The arguments of the only Notify call since the last check.
    static QVariantList notified() {
        const auto calls = callMock(u"GetMethodCalls"_s, {u"Notify"_s}).value(0).value<QDBusArgument>();
        QList<QVariantList> found;
        calls.beginArray();
        while (!calls.atEnd()) {
            quint64 time = 0;
            QVariantList arguments;
            calls.beginStructure();
            calls >> time >> arguments;
            calls.endStructure();
            found.append(arguments);
        }
        calls.endArray();
        callMock(u"ClearCalls"_s, {});
        EXPECT_EQ(found.size(), 1);
        return found.value(0);
    }
};

TEST_F(WithNotifications, TheServiceIsToldExactlyThis) {
    EXPECT_TRUE(await(center.isAvailable()));
    setMethod(u"GetCapabilities"_s, {}, u"as"_s, u"ret = ['body', 'sound']"_s);
    await(center.post(failure));
    const QVariantList arguments = notified();
    ASSERT_EQ(arguments.size(), 8);
    EXPECT_EQ(arguments.first(5),
              (QVariantList{sender.name, 0U, sender.desktopEntry, failure.title, failure.body}));
    EXPECT_EQ(qdbus_cast<QStringList>(arguments[5]), QStringList());
    EXPECT_EQ(qdbus_cast<QVariantMap>(arguments[6]),
              (QVariantMap{{u"urgency"_s, QVariant::fromValue(uchar(2))},
                           {u"desktop-entry"_s, sender.desktopEntry},
                           {u"sound-name"_s, u"dialog-warning"_s},
                           {u"x-ostrelle-thread"_s, u"ostrelle-processing"_s}}));
    EXPECT_EQ(arguments[7], -1);
}

TEST_F(WithNotifications, AClickOnAMessageOfOursIsHeardAndNoOther) {
    DesktopNotificationCenter withWindow({.name = sender.name, .desktopEntry = {}, .hasWindow = true});
    QList<QByteArray> clicks;
    QObject::connect(&withWindow, &DesktopNotificationCenter::clicked, &withWindow,
                     [&clicks](const QByteArray& token) { clicks.append(token); });
    setMethod(u"Notify"_s, u"susssasa{sv}i"_s, u"u"_s, u"ret = dbus.UInt32(7)"_s);
    await(withWindow.post(failure));
    EXPECT_EQ(qdbus_cast<QStringList>(notified().value(5)), QStringList({u"default"_s, u"Show"_s}));
    const auto emitSignal = [](const QString& name, uint id, const QString& text) {
        callMock(u"EmitSignal"_s, {notifications, name, u"us"_s, QVariantList{id, text}});
    };
    emitSignal(u"ActionInvoked"_s, 6, u"default"_s);
    emitSignal(u"ActivationToken"_s, 6, u"another's"_s);
    emitSignal(u"ActivationToken"_s, 7, u"token"_s);
    emitSignal(u"ActionInvoked"_s, 7, u"default"_s);
    waitUntil([&clicks] { return !clicks.isEmpty(); });
    EXPECT_EQ(clicks, QList<QByteArray>({"token"}));
}

TEST_F(WithNotifications, UrgencyAndSoundAreToldApart) {
    const struct {
        Sound sound;
        Interruption interruption;
        uchar urgency;
        QString soundName;
    } rows[] = {{Sound::normal, Interruption::normal, 1, u"message-new-instant"_s},
                {Sound::critical, Interruption::normal, 1, u"dialog-warning"_s},
                {Sound::normal, Interruption::critical, 2, u"message-new-instant"_s}};
    for (const auto& row : rows) {
        await(center.post({.title = u"t"_s,
                           .body = u"b"_s,
                           .threadIdentifier = u"i"_s,
                           .sound = row.sound,
                           .interruption = row.interruption}));
        const auto hints = qdbus_cast<QVariantMap>(notified().value(6));
        EXPECT_EQ(hints.value(u"urgency"_s), QVariant::fromValue(row.urgency));
        EXPECT_EQ(hints.value(u"sound-name"_s), row.soundName);
    }
}

TEST_F(WithNotifications, ABodyIsEscapedForAServiceThatReadsMarkup) {
    setMethod(u"GetCapabilities"_s, {}, u"as"_s, u"ret = ['body', 'body-markup']"_s);
    await(center.post(failure));
    EXPECT_EQ(notified().value(4), u"Files: &lt;A&amp;B&gt; \u00e9.jpg \U0001F4F7"_s);
}

TEST_F(WithNotifications, ARefusalIsThrownInTheServicesWords) {
    setMethod(
        u"Notify"_s, u"susssasa{sv}i"_s, u"u"_s,
        u"raise dbus.exceptions.DBusException('Too many.', name='org.freedesktop.Notifications.Error')"_s);
    const QString words = failureOf<Error>(center.post(failure)).localizedDescription();
    EXPECT_TRUE(words.contains(u"Too many."_s)) << words.toStdString();
}

class WithoutNotifications : public DesktopNotificationCenterTest {};

TEST_F(WithoutNotifications, NothingIsAvailable) {
    EXPECT_FALSE(await(center.isAvailable()));
    EXPECT_THROW(await(center.post(failure)), Error);
}

TEST_F(WithoutNotifications, AServiceThatNeverAnswersIsNotWaitedForInVain) {
    const FakeBusService silent(notifications, notificationsPath, nullptr);
    DesktopNotificationCenter impatient(sender, std::chrono::milliseconds(50));
    EXPECT_TRUE(await(impatient.isAvailable()));
    auto posting = impatient.post(failure);
    EXPECT_FALSE(posting.isReady());
    EXPECT_THROW(await(std::move(posting)), Error);
}

class WithoutBus : public DesktopNotificationCenterTest {};

TEST_F(WithoutBus, AskingAndPostingThrow) {
    EXPECT_THROW(await(center.isAvailable()), Error);
    EXPECT_THROW(await(center.post(failure)), Error);
}

} // namespace

} // namespace ostrelle
