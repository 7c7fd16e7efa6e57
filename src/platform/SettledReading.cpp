// SPDX-License-Identifier: GPL-3.0-or-later
#include "platform/SettledReading.h"

#include <array>
#include <chrono>

namespace ostrelle {

namespace {

/// Between attempts.
constexpr std::array<std::chrono::milliseconds, 2> pauses = {std::chrono::milliseconds(50),
                                                             std::chrono::milliseconds(200)};

} // namespace

bool ReadAttempts::again() {
    if (m_done == pauses.size()) {
        return false;
    }
    m_pause(pauses[m_done++]);
    return true;
}

bool ReadAttempts::againAfterFailure(const FileStamp& read) {
    return again() && FileStamp::at(m_path) != read;
}

} // namespace ostrelle
