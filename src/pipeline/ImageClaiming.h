// SPDX-License-Identifier: GPL-3.0-or-later
#pragma once

#include "pipeline/AnalyzerParts.h"

#include <QCoroTask>
#include <QDateTime>
#include <QList>
#include <QString>
#include <QStringList>
#include <memory>
#include <optional>

namespace ostrelle {

/// The result of a claim. If granted, no other program of the user captions the image while it lives.
struct HeldImage {
    std::shared_ptr<const ImageClaim> claim; ///< null when the image is already claimed
    std::optional<QDateTime> lastDone;       ///< when it was last captioned, if known

    bool isHeld() const { return claim != nullptr; }
    /// Times in the future do not count: the computer's clock has been set back.
    bool isCaptionedSince(const QDateTime& time, const QDateTime& now) const {
        return lastDone && *lastDone > time && *lastDone <= now;
    }
};

/// Tries to claim the image, without waiting. All references must outlive the task.
QCoro::Task<HeldImage> claimImage(ImageClaims& claims, FolderThreads& threads, AnalyzerLog& log,
                                  QString file);

/// Claims all images of a batch, in their order, and waits while another program captions any of them.
/// Nothing if the program ends first.
QCoro::Task<std::optional<QList<HeldImage>>> claimImages(AnalyzerParts parts, QStringList files);

/// Records for the next claimant of the image that it was captioned at that time. The image must be held.
QCoro::Task<> recordCaptioned(HeldImage image, QDateTime time);

} // namespace ostrelle
