// SPDX-License-Identifier: GPL-3.0-or-later
#include "transfer/remote/FetchLedger.h"

#include <cstdlib>

namespace ostrelle {

void FetchLedger::setAside(const FTPFileInfo& file) {
    m_failures.insert(file.name, {.size = file.size, .moment = m_clock.now()});
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

} // namespace ostrelle
