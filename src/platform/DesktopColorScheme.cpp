// SPDX-License-Identifier: GPL-3.0-or-later
#include "platform/DesktopColorScheme.h"

#include "platform/SessionBus.h"

#include <QCoroDBusPendingCall>
#include <QDBusConnection>
#include <QDBusMessage>
#include <QVariant>
#include <optional>

namespace ostrelle {

using namespace Qt::StringLiterals;

namespace {

const QString portalPath = u"/org/freedesktop/portal/desktop"_s;
const QString settingsInterface = u"org.freedesktop.portal.Settings"_s;
const QString appearance = u"org.freedesktop.appearance"_s;
const QString colorScheme = u"color-scheme"_s;

/// `Read`, which every version of the portal has; `ReadOne` is newer.
QDBusMessage question() {
    QDBusMessage message = QDBusMessage::createMethodCall(u"org.freedesktop.portal.Desktop"_s, portalPath,
                                                          settingsInterface, u"Read"_s);
    message.setArguments({appearance, colorScheme});
    return message;
}

/// The signal wraps the number in one variant, `Read` in two.
ColorScheme preferenceOf(QVariant value) {
    while (value.metaType() == QMetaType::fromType<QDBusVariant>()) {
        value = value.value<QDBusVariant>().variant();
    }
    if (value.metaType() != QMetaType::fromType<uint>()) {
        return ColorScheme::noPreference;
    }
    switch (value.toUInt()) {
    case 1:
        return ColorScheme::dark;
    case 2:
        return ColorScheme::light;
    default:
        return ColorScheme::noPreference;
    }
}

} // namespace

DesktopColorScheme::DesktopColorScheme(std::chrono::milliseconds patience) {
    ask(this, patience);
}

QCoro::Task<> DesktopColorScheme::ask(QPointer<DesktopColorScheme> scheme,
                                      std::chrono::milliseconds patience) {
    const std::optional<QDBusConnection> bus = co_await sessionBus(patience);
    if (!scheme) {
        co_return;
    }
    if (!bus) {
        scheme->settle();
        co_return;
    }
    scheme->watch(*bus); // first, so that no change between the answer and the watch is missed
    const QDBusPendingCall pending = bus->asyncCall(question(), static_cast<int>(patience.count()));
    const QDBusMessage answer = co_await pending;
    if (!scheme) {
        co_return;
    }
    if (answer.type() == QDBusMessage::ReplyMessage) {
        scheme->setPreference(preferenceOf(answer.arguments().value(0)));
    }
    scheme->settle();
}

/// From any sender: to match one by name, Qt would block this thread waiting for the bus.
void DesktopColorScheme::watch(QDBusConnection bus) {
    qRegisterMetaType<QDBusVariant>(); // or Qt, which looks up the slot's types by name, does not find it
    bus.connect({}, portalPath, settingsInterface, u"SettingChanged"_s, {appearance, colorScheme}, {}, this,
                SLOT(settingChanged(QString, QString, QDBusVariant)));
}

void DesktopColorScheme::settingChanged(const QString&, const QString&, const QDBusVariant& value) {
    setPreference(preferenceOf(value.variant()));
}

void DesktopColorScheme::setPreference(ColorScheme preference) {
    if (preference != m_preference) {
        m_preference = preference;
        Q_EMIT changed();
    }
}

void DesktopColorScheme::settle() {
    m_isSettled = true;
    Q_EMIT settled();
}

} // namespace ostrelle
