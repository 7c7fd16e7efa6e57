// SPDX-License-Identifier: GPL-3.0-or-later
#pragma once

#include "metadata/facts/ImageFacts.h"
#include "transfer/SeenImage.h"

#include <QList>
#include <QString>
#include <QStringList>
#include <QTimeZone>
#include <optional>

namespace ostrelle {

/// What the caption of an image amounts to.
struct CaptionJudgement {
    enum class Verdict {
        missing,  ///< none, or nothing but blanks
        tooShort, ///< a preset's stub
        present,  ///< somebody's
    };

    Verdict verdict = Verdict::missing;
    qsizetype characters = 0; ///< that a person sees, without the blanks around them

    static CaptionJudgement of(const std::optional<QString>& caption);
};

/// What was found out about an image without a word to anybody.
struct ImageCheck {
    SeenImage image;
    bool isSidecarNew = false;
    std::optional<QString> sidecarFailure; ///< why there is no sidecar, and none could be made
    CaptionJudgement caption;
    /// What the metadata say; nothing when they could not be read.
    std::optional<ImageFacts> facts;
    std::optional<FileStamp> stamp; ///< of the image file, with the facts
    QStringList readerLines;        ///< what the reader of the caption has for the log
};

/// Makes the missing sidecars of RAW images and reads the metadata. An image whose caption cannot be read has
/// none. Dates that are days are those of the zone. Never throws; for worker threads.
QList<ImageCheck> checkImages(const QString& folder, const QList<SeenImage>& images, const QTimeZone& zone);

} // namespace ostrelle
