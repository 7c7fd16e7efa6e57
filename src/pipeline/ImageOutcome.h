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

/// The outcome of one image, for the window, the manifest and the reports.
struct ImageOutcome {
    enum class Kind {
        notBegun,   ///< dismissed before its turn, or not reached when the program ended: no caption was
                    ///< written
        captioned,  ///< a caption was written
        unchanged,  ///< the model returned the caption that the image has: nothing was written
        skipped,    ///< left alone on purpose: it has a caption, or another run captioned it meanwhile
        edited,     ///< another program wrote a caption meanwhile: it stays
        changed,    ///< another program changed the picture or the metadata meanwhile: nothing was written
        refused,    ///< not admitted, for example without a roster or sidecar, or for its kind or name
        keyMissing, ///< no API key is stored; in a batch: failed
        unwritable, ///< no caption can be written until the editConditions change; in a batch: failed
        failed,
    };

    QString file;
    Kind kind = Kind::notBegun;
    QString reason;                ///< why it has no new caption, a sentence
    QStringList warnings;          ///< sentences: why the roster was not used, why the service refuses images
    std::exception_ptr cause = {}; ///< the exception behind the reason; null if there was none
    std::optional<QString> captionBefore; ///< trimmed
    std::optional<QString> captionAfter;

    // Of single images only, not of those in a batch.

    std::optional<QString> previewPath; ///< the copy of what the model saw
    std::optional<double> cost;         ///< the estimate, in US dollars, if the service reported usage
    std::optional<EditConditions> editConditions; ///< from before the metadata were read
    std::optional<FileStamp> imageStamp;          ///< of the image file as captioned, or else as read
};

using OutcomeKind = ImageOutcome::Kind;

/// True if the image needs no further attempt.
bool isDone(OutcomeKind kind);
/// True if the image should have been captioned and was not.
bool isFailure(OutcomeKind kind);

/// Receives the outcome of an image once it is final.
using OutcomeListener = std::function<void(const ImageOutcome& outcome)>;

} // namespace ostrelle

Q_DECLARE_METATYPE(ostrelle::ImageOutcome)
