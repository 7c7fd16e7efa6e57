// SPDX-License-Identifier: GPL-3.0-or-later
#pragma once

#include "core/Attempt.h"
#include "metadata/EditConditions.h"
#include "metadata/facts/ImageFacts.h"
#include "metadata/source/CaptionSource.h"

#include <QString>
#include <QStringList>
#include <QTimeZone>
#include <memory>
#include <optional>

namespace ostrelle {

/// How an image is opened.
struct Opening {
    bool makesSidecar = true;  ///< if a RAW image has none; if false, such an image counts as having no facts
    bool dumpsSidecar = false; ///< provides a log line with its first 2000 characters, for diagnosis
};

/// The contents of an image's files.
struct OpenedImage {
    EditConditions conditions; ///< from before the metadata were read
    /// Whether a sidecar was made for it, or why that failed.
    Attempt<bool> sidecar = Attempt<bool>::success(false);
    Attempt<EditableReading> metadata = Attempt<EditableReading>::failed(nullptr);
    std::shared_ptr<ImageFile> image;   ///< for the picture: a JPEG is still the one that was read
    std::optional<SeenPicture> picture; ///< if it was rendered ahead
    QStringList audioNotes;             ///< in the order to try them
    QString sidecarDump;                ///< the log line about it; empty if there is none
};

/// Makes the missing sidecar, if so asked, reads the metadata and lists the audio notes. Uses what was read
/// `ahead` as far as the files are still the same. Never throws: each part holds its failure. For worker
/// threads.
OpenedImage openImage(const QString& file, const QTimeZone& zone, const Opening& opening,
                      const OpenedImage* ahead = nullptr);

} // namespace ostrelle
