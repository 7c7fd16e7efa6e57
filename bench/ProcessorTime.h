// SPDX-License-Identifier: GPL-3.0-or-later
#pragma once

#include <time.h>

namespace ostrelle {

/// Seconds of processor time: of the calling thread (CLOCK_THREAD_CPUTIME_ID), or of all threads of the
/// process (CLOCK_PROCESS_CPUTIME_ID).
inline double processorSeconds(clockid_t whose) {
    timespec time{};
    ::clock_gettime(whose, &time);
    return static_cast<double>(time.tv_sec) + static_cast<double>(time.tv_nsec) / 1e9;
}

} // namespace ostrelle
