// SPDX-License-Identifier: GPL-3.0-or-later
#pragma once

#include "pipeline/ImageOutcome.h"

#include <QList>
#include <QString>
#include <QStringList>

namespace ostrelle {

/// The outcomes of the images of a run: first the illegible ones, then the others, each in the order of the
/// source.
struct RunTally {
    enum class Ending {
        refused,     ///< it did not begin, and the user has been shown why
        completed,   ///< also for a run without images
        keyMissing,  ///< the API key is gone: the rest was not begun
        interrupted, ///< the program ends: the rest was not captioned
    };

    Ending ending = Ending::refused;
    QList<ImageOutcome> images;
    /// Batch by batch, those that failed, in the order in which they did, and then all without a new caption.
    QStringList namesWithoutCaption = {};

    qsizetype count(OutcomeKind kind) const;
    qsizetype captioned() const { return count(OutcomeKind::captioned); }
    qsizetype failed() const;
    qsizetype notBegun() const { return count(OutcomeKind::notBegun); }
};

/// The status line of a run that was stopped by the program's end.
QString interruptionMessage(const RunTally& tally);

} // namespace ostrelle
