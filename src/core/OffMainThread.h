// SPDX-License-Identifier: GPL-3.0-or-later
#pragma once

#include "core/OnThreadPool.h"

#include <utility>

namespace ostrelle {

/// onThreadPool() on the program's own worker threads: at most one function per core runs at once.
template <typename Function>
auto offMainThread(Function function) {
    return onThreadPool(QThreadPool::globalInstance(), std::move(function));
}

} // namespace ostrelle
