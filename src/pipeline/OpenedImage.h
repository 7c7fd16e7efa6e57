// SPDX-License-Identifier: GPL-3.0-or-later
#pragma once

#include "core/Attempt.h"
#include "metadata/EditConditions.h"
#include "metadata/facts/ImageFacts.h"
#include "metadata/source/CaptionSource.h"

#include <QString>
#include <QStringList>
#include <QTimeZone>
#include <optional>

namespace ostrelle {

struct ImageAhead;

/// How an image is opened.
struct Opening {
    bool makesSidecar = true;  ///< where a RAW image has none
    bool dumpsSidecar = false; ///< its beginning is logged, for diagnosis
};

/// What the files of an image say, from one opening.
struct OpenedImage {
    EditConditions conditions; ///< from before the metadata were read
    /// Whether a new sidecar was made for it.
    Attempt<bool> sidecar = Attempt<bool>::success(false);
    Attempt<EditableReading> metadata = Attempt<EditableReading>::failed(nullptr);
    std::optional<SeenPicture> picture; ///< when it was made ahead, and is still that of the file
    QStringList audioNotes;             ///< in the order in which they are to be tried
    QString sidecarDump;                ///< the log line for it; empty without one
};

/// What was read of an image before its run came to it.
struct ImageAhead {
    OpenedImage opened;
    std::optional<SeenPicture> picture;
};

/// Reads the image's metadata and looks what lies beside it. What was read ahead counts where the files are
/// still the same. Never throws; for worker threads.
OpenedImage openImage(const QString& file, const QTimeZone& zone, const Opening& opening,
                      const ImageAhead* ahead = nullptr);

/// The picture as the model is to see it. Throws ExtractError.
SeenPicture renderForModel(const QString& file);

} // namespace ostrelle
