// SPDX-License-Identifier: GPL-3.0-or-later
#include "support/Await.h"

#include <QCoreApplication>
#include <QDeadlineTimer>
#include <QEventLoop>
#include <QTimer>
#include <chrono>
#include <stdexcept>

namespace ostrelle {

void waitUntil(const std::function<bool()>& condition) {
    const QDeadlineTimer deadline(std::chrono::seconds(60));
    QTimer wakeUp; // so that the loop sees the deadline even if no event arrives
    wakeUp.start(std::chrono::milliseconds(20));
    while (!condition()) {
        if (deadline.hasExpired()) {
            throw std::runtime_error("waited 60 seconds in vain");
        }
        QCoreApplication::processEvents(QEventLoop::WaitForMoreEvents);
    }
}

} // namespace ostrelle
