// SPDX-License-Identifier: GPL-3.0-or-later
#pragma once

#include "pipeline/ImageFailure.h"
#include "pipeline/ImageOutcome.h"
#include "platform/Alerts.h"

#include <QList>
#include <QString>
#include <QStringList>
#include <QUrl>
#include <optional>

namespace ostrelle {

/// What has become of the images of a selection, and what the user is told about it.
class SelectionTally {
public:
    static SelectionTally of(const QList<ImageOutcome>& images);

    qint64 success() const { return m_success; }
    qint64 failed() const { return m_failedImages.size(); }
    /// How many of the failed could not be written.
    qint64 permissionErrors() const { return m_permissionWords.size(); }
    /// Whether one of these speaks of a rate limit, which then is what the user is told about.
    bool mentionsRateLimit() const { return m_mentionsRateLimit; }

    QStringList failedNames() const;
    /// Of these, the ones that the model service took no request for.
    QStringList rateLimitedNames() const { return m_rateLimitedNames; }
    /// What is added to the notification of failures that have nothing to do with permissions.
    std::optional<QString> hint() const;
    /// The words of the first permission errors, and how many more there are.
    QString errorDetail() const;
    /// What is shown when there are permission errors; its first button leads to privacySettings().
    Alert permissionAlert() const;
    /// The status line after the run.
    QString closingMessage() const;

private:
    void addFailure(const QString& image, const ImageFailure& failure);

    qint64 m_success = 0;
    QStringList m_failedImages; ///< paths
    QStringList m_rateLimitedNames;
    QStringList m_permissionWords;
    bool m_mentionsRateLimit = false;
};

/// Where the desktop's user says what programs may write to.
QUrl privacySettings();

} // namespace ostrelle
