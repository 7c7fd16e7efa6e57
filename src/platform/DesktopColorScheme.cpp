// SPDX-License-Identifier: GPL-3.0-or-later
#include "platform/DesktopColorScheme.h"

#include "platform/BusConnection.h"

#include <QCoroDBusPendingCall>
#include <QDBusConnection>
#include <QDBusMessage>
#include <QVariant>
#include <iterator>
#include <optional>
#include <utility>

namespace ostrelle {

using namespace Qt::StringLiterals;

namespace {

const QString portalPath = u"/org/freedesktop/portal/desktop"_s;
const QString settingsInterface = u"org.freedesktop.portal.Settings"_s;
const QString appearance = u"org.freedesktop.appearance"_s;
const QString colorScheme = u"color-scheme"_s;
const QString contrast = u"contrast"_s;

/// `Read`, which every version of the portal has; `ReadOne` is newer.
QDBusMessage question(const QString& key) {
    QDBusMessage message = QDBusMessage::createMethodCall(u"org.freedesktop.portal.Desktop"_s, portalPath,
                                                          settingsInterface, u"Read"_s);
    message.setArguments({appearance, key});
    return message;
}

/// Each setting is a number, which the signal wraps in one variant and `Read` in two. 0 if it makes no sense.
uint numberIn(QVariant value) {
    while (value.metaType() == QMetaType::fromType<QDBusVariant>()) {
        value = value.value<QDBusVariant>().variant();
    }
    return value.metaType() == QMetaType::fromType<uint>() ? value.toUInt() : 0;
}

ColorScheme preferenceOf(uint number) {
    switch (number) {
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
    // Both at once: an old portal may know but one of them.
    const int most = static_cast<int>(patience.count());
    const QDBusPendingCall pending[] = {bus->asyncCall(question(colorScheme), most),
                                        bus->asyncCall(question(contrast), most)};
    const QString keys[] = {colorScheme, contrast};
    for (size_t index = 0; index < std::size(pending); ++index) {
        const QDBusMessage answer = co_await pending[index];
        if (!scheme) {
            co_return;
        }
        if (answer.type() == QDBusMessage::ReplyMessage) {
            scheme->set(keys[index], answer.arguments().value(0));
        }
    }
    scheme->settle();
}

/// From any sender: to match one by name, Qt would block this thread waiting for the bus.
void DesktopColorScheme::watch(QDBusConnection bus) {
    qRegisterMetaType<QDBusVariant>(); // or Qt, which looks up the slot's types by name, does not find it
    for (const QString& key : {colorScheme, contrast}) {
        bus.connect({}, portalPath, settingsInterface, u"SettingChanged"_s, {appearance, key}, {}, this,
                    SLOT(settingChanged(QString, QString, QDBusVariant)));
    }
}

void DesktopColorScheme::settingChanged(const QString&, const QString& key, const QDBusVariant& value) {
    set(key, value.variant());
}

void DesktopColorScheme::set(const QString& key, const QVariant& value) {
    const auto before = std::pair(m_preference, m_wantsHighContrast);
    const uint number = numberIn(value);
    if (key == contrast) {
        m_wantsHighContrast = number == 1;
    } else {
        m_preference = preferenceOf(number);
    }
    if (before != std::pair(m_preference, m_wantsHighContrast)) {
        Q_EMIT changed();
    }
}

void DesktopColorScheme::settle() {
    m_isSettled = true;
    Q_EMIT settled();
}

} // namespace ostrelle
