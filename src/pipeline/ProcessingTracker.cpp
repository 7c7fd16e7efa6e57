// SPDX-License-Identifier: GPL-3.0-or-later
#include "pipeline/ProcessingTracker.h"

namespace ostrelle {

std::optional<std::chrono::milliseconds> ProcessingTracker::timeSinceFailure(const QString& name) const {
    const auto failure = m_failedFiles.constFind(name);
    if (failure == m_failedFiles.constEnd()) {
        return std::nullopt;
    }
    return std::chrono::milliseconds(failure->msecsTo(m_clock.now()));
}

bool ProcessingTracker::hasRecentlyFailed(const QString& name) const {
    const auto elapsed = timeSinceFailure(name);
    return elapsed && elapsed->count() >= 0 && *elapsed < retryWindow;
}

void ProcessingTracker::begin(const QString& name) {
    m_processingFiles.insert(name);
    m_failedFiles.remove(name);
    m_unwritable.remove(name);
}

void ProcessingTracker::finish(const QString& name, bool success) {
    leave(name);
    if (success) {
        m_failedFiles.remove(name);
    } else {
        m_failedFiles.insert(name, m_clock.now());
    }
}

void ProcessingTracker::release(const QString& name) {
    leave(name);
}

void ProcessingTracker::setUnwritable(const QString& name, const EditConditions& conditions) {
    m_unwritable.insert(name, conditions);
}

QSet<QString> ProcessingTracker::unwritable() const {
    return {m_unwritable.keyBegin(), m_unwritable.keyEnd()};
}

bool ProcessingTracker::isUnwritable(const QString& name, const EditConditions& now) const {
    const auto conditions = m_unwritable.constFind(name);
    return conditions != m_unwritable.constEnd() && *conditions == now;
}

bool ProcessingTracker::hasLeftSince(const QString& name, quint64 departures) const {
    return m_lastDepartures.value(name) > departures;
}

void ProcessingTracker::leave(const QString& name) {
    m_processingFiles.remove(name);
    m_lastDepartures.insert(name, ++m_departures);
}

} // namespace ostrelle
