// SPDX-License-Identifier: GPL-3.0-or-later
#pragma once

#include "core/OnThreadPool.h"

#include <utility>

namespace ostrelle {

/// onThreadPool() with the program's own worker threads: at most as many functions run at once as there are
/// cores.
template <typename Function>
auto offMainThread(Function function) {
    return onThreadPool(QThreadPool::globalInstance(), std::move(function));
}

} // namespace ostrelle
