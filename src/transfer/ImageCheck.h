// SPDX-License-Identifier: GPL-3.0-or-later
#pragma once

#include "metadata/MetadataStamp.h"
#include "metadata/facts/ImageFacts.h"
#include "transfer/SeenImage.h"

#include <QList>
#include <QString>
#include <QStringList>
#include <QTimeZone>
#include <optional>

namespace ostrelle {

/// What the caption of an image is worth.
struct CaptionJudgement {
    enum class Verdict {
        missing,  ///< none, or nothing but blanks
        tooShort, ///< a preset's stub
        present,  ///< a person's, by its length
    };

    Verdict verdict = Verdict::missing;
    qsizetype characters = 0; ///< user-perceived ones, once trimmed

    static CaptionJudgement of(const std::optional<QString>& caption);
};

/// What a worker thread found out about an image; nothing is logged yet.
struct ImageCheck {
    SeenImage image;
    bool isSidecarNew = false;
    std::optional<QString> sidecarFailure; ///< why a missing sidecar could not be made
    CaptionJudgement caption;
    /// From the metadata; nothing if they could not be read.
    std::optional<ImageFacts> facts;
    std::optional<FileStamp> stamp; ///< of the image file, from just before the facts were read
    MetadataStamp metadataStamp;    ///< from just before, too
    QStringList readerLines;        ///< for the log, from reading the caption
};

/// Makes the missing sidecars of RAW images and reads the metadata. An image whose caption cannot be read
/// counts as having none. Dates become days in the zone. Never throws; for worker threads.
QList<ImageCheck> checkImages(const QString& folder, const QList<SeenImage>& images, const QTimeZone& zone);

} // namespace ostrelle
