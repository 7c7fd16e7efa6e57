// SPDX-License-Identifier: GPL-3.0-or-later
#include "core/Event.h"

#include <QCoroFuture>

namespace ostrelle {

Event::Event() : m_promise(std::make_shared<QPromise<void>>()) {
    m_promise->start();
}

QCoro::Task<> Event::wait(std::shared_ptr<QPromise<void>> promise) {
    QFuture<void> future = promise->future();
    co_await future;
}

} // namespace ostrelle
