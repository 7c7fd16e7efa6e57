// SPDX-License-Identifier: GPL-3.0-or-later
#pragma once

#include <QCoroTask>
#include <QDBusConnection>
#include <QDBusVariant>
#include <QObject>
#include <QPointer>
#include <chrono>

namespace ostrelle {

/// Which appearance the user of the desktop prefers.
enum class ColorScheme { noPreference, dark, light };

/// The preference, and whether high contrast is wanted, from the desktop's portal
/// (org.freedesktop.portal.Settings on the session bus), kept up to date. No preference when there is no bus
/// or portal, or its answer makes no sense.
class DesktopColorScheme : public QObject {
    Q_OBJECT

public:
    /// Sends the question and returns at once. `patience` is how long to wait for the answer.
    explicit DesktopColorScheme(std::chrono::milliseconds patience = std::chrono::seconds(5));

    ColorScheme preference() const { return m_preference; }
    bool wantsHighContrast() const { return m_wantsHighContrast; }
    /// True once the answer has come, or once there will be none.
    bool isSettled() const { return m_isSettled; }

Q_SIGNALS:
    /// The preference or the contrast has changed.
    void changed();
    /// Emitted once, after the preference was set.
    void settled();

private Q_SLOTS:
    void settingChanged(const QString& group, const QString& key, const QDBusVariant& value);

private:
    static QCoro::Task<> ask(QPointer<DesktopColorScheme> scheme, std::chrono::milliseconds patience);
    void watch(QDBusConnection bus);
    void set(const QString& key, const QVariant& value);
    void settle();

    ColorScheme m_preference = ColorScheme::noPreference;
    bool m_wantsHighContrast = false;
    bool m_isSettled = false;
};

} // namespace ostrelle
