// SPDX-License-Identifier: GPL-3.0-or-later
#pragma once

#include "pipeline/ImageFailure.h"
#include "pipeline/ImageOutcome.h"
#include "platform/Alerts.h"

#include <QList>
#include <QString>
#include <QStringList>
#include <optional>

namespace ostrelle {

/// The outcome of a selection, and what the user is shown of it.
class SelectionTally {
public:
    static SelectionTally of(const QList<ImageOutcome>& images);

    qint64 success() const { return m_success; }
    qint64 failed() const { return m_failedImages.size(); }
    /// How many of the failed images could not be written.
    qint64 permissionErrors() const { return m_permissionWords.size(); }
    /// Whether one of these errors mentions a rate limit, which the user is then notified of instead.
    bool mentionsRateLimit() const { return m_mentionsRateLimit; }

    QStringList failedNames() const;
    /// The failed images for which the model service accepted no request.
    QStringList rateLimitedNames() const { return m_rateLimitedNames; }
    /// An addition to the notification of failures without permission errors; nothing unless a RAW image
    /// failed.
    std::optional<QString> hint() const;
    /// Why images failed, up to two sentences; nothing if none did.
    std::optional<QString> reasons() const;
    /// Of the first image that failed.
    QString firstFailedFolder() const;
    /// The first permission errors, and how many more there are.
    QString errorDetail() const;
    /// The alert about permission errors.
    Alert permissionAlert() const;
    /// The status line after the run.
    QString closingMessage() const;

private:
    void addFailure(const QString& image, const ImageFailure& failure);

    qint64 m_success = 0;
    QStringList m_failedImages; ///< paths
    QStringList m_reasons;      ///< each once
    QStringList m_rateLimitedNames;
    QStringList m_permissionWords;
    bool m_mentionsRateLimit = false;
};

} // namespace ostrelle
