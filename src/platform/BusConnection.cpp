// SPDX-License-Identifier: GPL-3.0-or-later
#include "platform/BusConnection.h"

#include <QCoroTimer>
#include <QElapsedTimer>
#include <QTimer>
#include <future>
#include <memory>
#include <thread>

namespace ostrelle {

namespace {

QCoro::Task<std::optional<QDBusConnection>> connected(QDBusConnection (*connect)(),
                                                      std::chrono::milliseconds patience) {
    auto promise = std::make_shared<std::promise<QDBusConnection>>();
    std::future<QDBusConnection> connection = promise->get_future();
    std::thread([promise, connect] { promise->set_value(connect()); }).detach();

    // Polled rather than signalled: the thread may outlive the program's event loop.
    QElapsedTimer waited;
    waited.start();
    QTimer look;
    look.start(std::chrono::milliseconds(5));
    while (connection.wait_for(std::chrono::seconds(0)) != std::future_status::ready) {
        if (waited.elapsed() > patience.count()) {
            co_return std::nullopt;
        }
        co_await look;
    }
    co_return connection.get();
}

} // namespace

QCoro::Task<std::optional<QDBusConnection>> sessionBus(std::chrono::milliseconds patience) {
    return connected(&QDBusConnection::sessionBus, patience);
}

QCoro::Task<std::optional<QDBusConnection>> systemBus(std::chrono::milliseconds patience) {
    return connected(&QDBusConnection::systemBus, patience);
}

} // namespace ostrelle
