// SPDX-License-Identifier: GPL-3.0-or-later
#pragma once

#include "platform/NotificationCenter.h"

#include <QCoroTask>
#include <QList>

namespace ostrelle {

/// A desktop that keeps the notifications posted to it.
class RecordingNotifications : public NotificationCenter {
public:
    QCoro::Task<bool> isAvailable() override { co_return true; }
    QCoro::Task<> post(DesktopNotification notification) override {
        posted.append(notification);
        co_return;
    }

    QList<DesktopNotification> posted;
};

} // namespace ostrelle
