// SPDX-License-Identifier: GPL-3.0-or-later
#pragma once

#include "pipeline/ImageOutcome.h"

#include <QList>
#include <QString>
#include <QStringList>

namespace ostrelle {

/// What became of the images of a run, in their order.
struct RunTally {
    enum class Ending {
        refused,     ///< it did not begin, and the user knows why
        completed,   ///< also of a run without images
        keyMissing,  ///< the API key is gone: the rest was not attempted
        interrupted, ///< the program ends: the rest was not begun
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

/// The status line of a run that the program's end has stopped.
QString interruptionMessage(const RunTally& tally);

} // namespace ostrelle
