// SPDX-License-Identifier: GPL-3.0-or-later
#pragma once

#include "core/Attempt.h"
#include "core/OnThreadPool.h"
#include "platform/FolderThreads.h"
#include "platform/KeptLines.h"
#include "platform/PlainLog.h"

#include <QCoroTask>
#include <QFileInfo>
#include <QString>
#include <memory>
#include <type_traits>
#include <utility>

namespace ostrelle {

/// Runs a function that uses a file on the thread of the file's folder, see onThreadPool().
template <typename Function>
auto onThreadOf(FolderThreads& threads, const QString& file, Function function) {
    return onThreadPool(threads.of(QFileInfo(file).path()), std::move(function));
}

/// The same for a function that logs: the lines are printed on the caller's thread, even if it throws.
template <typename Function>
QCoro::Task<std::invoke_result_t<Function, PlainLog&>> onThreadOf(FolderThreads& threads, QString file,
                                                                  PlainLog& log, Function function) {
    const auto lines = std::make_shared<KeptLines>();
    auto work = [function = std::move(function), lines] { return function(*lines); };
    const auto done = co_await attempt(onThreadOf(threads, file, std::move(work)));
    lines->tell(log);
    if (!done) {
        done.rethrow();
    }
    if constexpr (!std::is_void_v<std::invoke_result_t<Function, PlainLog&>>) {
        co_return *done;
    }
}

} // namespace ostrelle
