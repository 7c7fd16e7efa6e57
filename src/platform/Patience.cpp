// SPDX-License-Identifier: GPL-3.0-or-later
#include "platform/Patience.h"

#include "core/Event.h"

#include <memory>
#include <utility>

namespace ostrelle {

namespace {

QCoro::Task<> awaitEnd(QCoro::Task<> task, Event over, std::shared_ptr<bool> hasEnded) {
    co_await task;
    *hasEnded = true;
    over.happen();
}

} // namespace

QCoro::Task<bool> endsWithin(QCoro::Task<> task, Clock& clock, std::chrono::milliseconds patience) {
    const Event over;
    const auto hasEnded = std::make_shared<bool>(false);
    const auto timer = clock.after(patience, [over] { over.happen(); });
    const QCoro::Task<> ending = awaitEnd(std::move(task), over, hasEnded);
    co_await over.happened();
    co_return *hasEnded;
}

} // namespace ostrelle
