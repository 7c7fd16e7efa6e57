// SPDX-License-Identifier: GPL-3.0-or-later
#pragma once

#include "metadata/EditConditions.h"
#include "platform/Clock.h"

#include <QDateTime>
#include <QHash>
#include <QSet>
#include <QString>
#include <chrono>
#include <optional>

namespace ostrelle {

/// Tracks which images are in the works and which have failed recently, so that none is begun twice or
/// retried at once. Images go by their file name, without the folder. Kept in memory only.
class ProcessingTracker {
public:
    /// How long a failed image is left alone.
    static constexpr std::chrono::seconds retryWindow{60};

    explicit ProcessingTracker(const Clock& clock) : m_clock(clock) {}

    bool isProcessing(const QString& name) const { return m_processingFiles.contains(name); }
    /// Nothing if the image has not failed since it last began or succeeded. Negative if the computer's clock
    /// has been set back since.
    std::optional<std::chrono::milliseconds> timeSinceFailure(const QString& name) const;
    /// True while the image is to be left alone. A failure in the future does not count: the computer's clock
    /// has been set back, and the image must not wait until it has caught up.
    bool hasRecentlyFailed(const QString& name) const;

    /// The image is now in the works; an earlier failure is forgotten.
    void begin(const QString& name);
    /// The image is no longer in the works.
    void finish(const QString& name, bool success);
    /// The image is no longer in the works, without an attempt.
    void release(const QString& name);

    /// The image cannot be edited under these conditions.
    void setUnwritable(const QString& name, const EditConditions& conditions);
    /// The images that could not be edited at the last attempt.
    QSet<QString> unwritable() const;
    /// Whether the image could not be edited under exactly these conditions.
    bool isUnwritable(const QString& name, const EditConditions& now) const;

    /// How many images have left the works. What was read of an image before it left may be out of date:
    /// remember the count before reading, and check hasLeftSince() before acting.
    quint64 departures() const { return m_departures; }
    bool hasLeftSince(const QString& name, quint64 departures) const;

private:
    void leave(const QString& name);

    const Clock& m_clock;
    QSet<QString> m_processingFiles;
    QHash<QString, QDateTime> m_failedFiles;
    QHash<QString, EditConditions> m_unwritable;
    QHash<QString, quint64> m_lastDepartures;
    quint64 m_departures = 0;
};

} // namespace ostrelle
