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

/// Which images are in the works, and which have failed lately: keeps one from being begun twice or retried
/// at once. Images are known by their file name without the folder. All of it is in memory only.
class ProcessingTracker {
public:
    /// How long a failed image is left alone.
    static constexpr std::chrono::seconds retryWindow{60};

    explicit ProcessingTracker(const Clock& clock) : m_clock(clock) {}

    bool isProcessing(const QString& name) const { return m_processingFiles.contains(name); }
    /// Nothing for an image without a failure since it last succeeded or was begun. Negative after the
    /// computer's clock has been set back.
    std::optional<std::chrono::milliseconds> timeSinceFailure(const QString& name) const;
    /// True while the image is to be left alone. A failure that lies in the future is none: the computer's
    /// clock has been set back, and the image must not wait until it has caught up.
    bool hasRecentlyFailed(const QString& name) const;

    /// The image is in the works from now on; an earlier failure is forgotten.
    void begin(const QString& name);
    /// The image is no longer in the works.
    void finish(const QString& name, bool success);
    /// The image is no longer in the works, and nothing has been tried.
    void release(const QString& name);

    /// The image cannot be edited as things are.
    void setUnwritable(const QString& name, const EditConditions& conditions);
    /// The images that could not be edited when they were last tried.
    QSet<QString> unwritable() const;
    /// Whether the image could not be edited under just these conditions.
    bool isUnwritable(const QString& name, const EditConditions& now) const;

    /// Counts the images that left the works. What a reader saw of an image before it left may be out of
    /// date: remember the count before reading, and ask hasLeftSince() before acting.
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
