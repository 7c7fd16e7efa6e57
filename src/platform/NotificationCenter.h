// SPDX-License-Identifier: GPL-3.0-or-later
#pragma once

#include <QCoroTask>
#include <QString>

namespace ostrelle {

/// A message that the desktop shows over whatever the user is looking at. All texts are plain.
struct DesktopNotification {
    enum class Sound { normal, critical };
    enum class Interruption { normal, critical };

    QString title;
    QString body;
    QString threadIdentifier; ///< the kind of message: messages of a kind belong together
    Sound sound = Sound::normal;
    Interruption interruption = Interruption::normal;

    bool operator==(const DesktopNotification&) const = default;
};

/// Where the desktop accepts such messages.
class NotificationCenter {
public:
    virtual ~NotificationCenter() = default;

    /// True when messages can be shown now. Throws when the desktop cannot be asked.
    virtual QCoro::Task<bool> isAvailable() = 0;
    /// Resumes when the desktop has accepted the message. Throws when it does not.
    virtual QCoro::Task<> post(DesktopNotification notification) = 0;
};

} // namespace ostrelle
