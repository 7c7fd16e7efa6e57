// SPDX-License-Identifier: GPL-3.0-or-later
#include "transfer/remote/FetchLedger.h"

#include <cstdlib>

namespace ostrelle {

void FetchLedger::setAside(const FTPFileInfo& file) {
    m_failures.insert(file.name, {.size = file.size, .moment = m_clock.now()});
}

bool FetchLedger::isSetAside(const FTPFileInfo& file) const {
    constexpr qint64 rest = 60'000; // milliseconds
    const auto failure = m_failures.constFind(file.name);
    // A failure in the future is none: the computer's clock has been set back.
    return failure != m_failures.constEnd() && failure->size == file.size &&
           std::abs(failure->moment.msecsTo(m_clock.now())) < rest;
}

} // namespace ostrelle
