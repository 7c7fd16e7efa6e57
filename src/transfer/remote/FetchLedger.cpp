// SPDX-License-Identifier: GPL-3.0-or-later
#include "transfer/remote/FetchLedger.h"

#include <cstdlib>

namespace ostrelle {

void FetchLedger::setAside(const FTPFileInfo& file) {
    const int earlier = hasFailed(file) ? m_failures.value(file.name).count : 0;
    m_failures.insert(file.name, {.size = file.size, .moment = m_clock.now(), .count = earlier + 1});
}

bool FetchLedger::hasFailed(const FTPFileInfo& file) const {
    const auto failure = m_failures.constFind(file.name);
    return failure != m_failures.constEnd() && failure->size == file.size;
}

bool FetchLedger::isSetAside(const FTPFileInfo& file) const {
    constexpr qint64 rest = 60'000; // milliseconds
    // A failure in the future is none: the computer's clock has been set back.
    return hasFailed(file) && std::abs(m_failures.value(file.name).moment.msecsTo(m_clock.now())) < rest;
}

bool FetchLedger::isWorthWaitingFor(const FTPFileInfo& file) const {
    return isSetAside(file) && m_failures.value(file.name).count == 1;
}

} // namespace ostrelle
