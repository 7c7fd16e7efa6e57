// SPDX-License-Identifier: GPL-3.0-or-later
#pragma once

#include "metadata/EditConditions.h"
#include "platform/FileStamp.h"

#include <QMetaType>
#include <QString>
#include <QStringList>
#include <exception>
#include <functional>
#include <optional>

namespace ostrelle {

/// What became of one image, from the write to the window and the line of a report.
struct ImageOutcome {
    enum class Kind {
        notBegun,   ///< sent away before its turn: nothing was tried
        captioned,  ///< a caption was written
        unchanged,  ///< the model returned the caption that the image has: nothing was written
        skipped,    ///< left alone on purpose: it has a caption, or another run captioned it meanwhile
        edited,     ///< somebody else wrote a caption meanwhile: theirs stays
        changed,    ///< somebody else changed the picture or the metadata meanwhile: nothing was written
        refused,    ///< not admitted: no roster is set, files of its kind are not captioned, or it has no
                    ///< sidecar
        keyMissing, ///< no API key is stored
        unwritable, ///< failed, and will fail until the rights on the file or its folder change
        failed,
    };

    QString file;
    Kind kind = Kind::notBegun;
    QString reason;                ///< why it has no new caption, a sentence
    QStringList warnings;          ///< what its caption was made without, a sentence each
    std::exception_ptr cause = {}; ///< the exception behind the reason; null where none was thrown
    std::optional<QString> captionBefore;
    std::optional<QString> captionAfter;
    std::optional<QString> previewPath;           ///< the copy of what the model saw
    std::optional<double> cost;                   ///< the estimate for this image, in US dollars
    std::optional<EditConditions> editConditions; ///< from before the model was asked
    std::optional<FileStamp> imageStamp;          ///< the image file as captioned, or else as read
};

using OutcomeKind = ImageOutcome::Kind;

/// The image needs no further attempt.
bool isDone(OutcomeKind kind);
/// The image should have got a caption and did not.
bool isFailure(OutcomeKind kind);

/// Hears of each image that is done with.
using OutcomeListener = std::function<void(const ImageOutcome& outcome)>;

} // namespace ostrelle

Q_DECLARE_METATYPE(ostrelle::ImageOutcome)
