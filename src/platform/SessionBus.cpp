// SPDX-License-Identifier: GPL-3.0-or-later
#include "platform/SessionBus.h"

#include <QCoroTimer>
#include <QElapsedTimer>
#include <QTimer>
#include <future>
#include <memory>
#include <thread>

namespace ostrelle {

QCoro::Task<std::optional<QDBusConnection>> sessionBus(std::chrono::milliseconds patience) {
    auto promise = std::make_shared<std::promise<QDBusConnection>>();
    std::future<QDBusConnection> connected = promise->get_future();
    std::thread([promise] { promise->set_value(QDBusConnection::sessionBus()); }).detach();

    // Polled rather than signalled: the thread may outlive the program's event loop.
    QElapsedTimer waited;
    waited.start();
    QTimer look;
    look.start(std::chrono::milliseconds(5));
    while (connected.wait_for(std::chrono::seconds(0)) != std::future_status::ready) {
        if (waited.elapsed() > patience.count()) {
            co_return std::nullopt;
        }
        co_await look;
    }
    co_return connected.get();
}

} // namespace ostrelle
