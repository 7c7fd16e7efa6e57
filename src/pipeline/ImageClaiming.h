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

/// An image that no other program of the user captions while this lives.
struct HeldImage {
    std::shared_ptr<const ImageClaim> claim; ///< null when somebody else has the image
    std::optional<QDateTime> lastDone;       ///< when it was last captioned, as far as that is known

    bool isHeld() const { return claim != nullptr; }
    /// A moment that is still to come is none: the computer's clock has been set back.
    bool isCaptionedSince(const QDateTime& time, const QDateTime& now) const {
        return lastDone && *lastDone > time && *lastDone <= now;
    }
};

/// Claims the image, if nobody has. All references have to outlive the task.
QCoro::Task<HeldImage> claimImage(ImageClaims& claims, FolderThreads& threads, AnalyzerLog& log,
                                  QString file);

/// Claims all images of a batch, in their order, and waits for those that somebody else captions. Nothing
/// when the program ends meanwhile.
QCoro::Task<std::optional<QList<HeldImage>>> claimImages(AnalyzerParts parts, QStringList files);

/// Leaves word for whoever claims the image next that it was captioned at that time.
QCoro::Task<> recordCaptioned(HeldImage image, QDateTime time);

} // namespace ostrelle
