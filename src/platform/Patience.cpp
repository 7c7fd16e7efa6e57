// SPDX-License-Identifier: GPL-3.0-or-later
#include "platform/Patience.h"

#include <QCoroFuture>
#include <QPromise>
#include <memory>
#include <utility>

namespace ostrelle {

namespace {

struct Wait {
    QPromise<void> over;
    bool hasEnded = false;
};

QCoro::Task<> tell(std::shared_ptr<Wait> wait, QCoro::Task<> task) {
    co_await task;
    wait->hasEnded = true;
    wait->over.finish();
}

} // namespace

QCoro::Task<bool> endsWithin(QCoro::Task<> task, Clock& clock, std::chrono::milliseconds patience) {
    const auto wait = std::make_shared<Wait>();
    wait->over.start();
    const auto timer = clock.after(patience, [wait] { wait->over.finish(); });
    const QCoro::Task<> told = tell(wait, std::move(task));
    QFuture<void> over = wait->over.future();
    co_await over;
    co_return wait->hasEnded;
}

} // namespace ostrelle
