// SPDX-License-Identifier: GPL-3.0-or-later
#pragma once

#include "core/Attempt.h"
#include "metadata/EditConditions.h"
#include "metadata/facts/ImageFacts.h"
#include "metadata/source/CaptionSource.h"

#include <QString>
#include <QStringList>
#include <QTimeZone>

namespace ostrelle {

/// How an image is opened.
struct Opening {
    bool makesSidecar = true;   ///< for a RAW image that has none; otherwise it has no facts yet
    bool rendersPicture = true; ///< of an image that may get a caption
    bool keepsCaptions = false; ///< an image with a real caption gets no other
    bool dumpsSidecar = false;  ///< provides a log line with its first 2000 characters, for diagnosis
};

/// The contents of an image's files, from one opening.
struct OpenedImage {
    EditConditions conditions; ///< from before the metadata were read
    /// Whether a sidecar was made for it, or why that failed.
    Attempt<bool> sidecar = Attempt<bool>::success(false);
    Attempt<EditableReading> metadata = Attempt<EditableReading>::failed(nullptr);
    /// Null if the image gets no caption, or its picture was not asked for.
    Attempt<SeenPicture> picture = Attempt<SeenPicture>::failed(nullptr);
    QStringList audioNotes; ///< in the order to try them
    QString sidecarDump;    ///< the log line about it; empty if there is none

    /// Whether the image has a caption that such an opening keeps.
    bool keepsCaption(const Opening& opening) const;
};

/// Makes the missing sidecar, reads the metadata, renders the picture and lists the audio notes. Uses what
/// was read `ahead` as far as the files are still the same. Never throws: each part holds its failure. For
/// worker threads.
OpenedImage openImage(const QString& file, const QTimeZone& zone, const Opening& opening,
                      const OpenedImage* ahead = nullptr);

} // namespace ostrelle
