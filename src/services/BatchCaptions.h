// SPDX-License-Identifier: GPL-3.0-or-later
#pragma once

#include "services/ChatResponse.h"

#include <QByteArray>
#include <QList>
#include <QString>
#include <optional>

namespace ostrelle {

/// One picture of a batch and what is known about it.
struct BatchImageItem {
    QByteArray imageJPEGData;
    QString filename; ///< what the model is told
    QString context;
};

/// What the model said about one picture.
struct BatchCaptionResult {
    qsizetype position = 0; ///< of the picture in the request, from 0; file names may repeat
    QString filename;
    QString caption; ///< trimmed, perhaps empty

    bool operator==(const BatchCaptionResult&) const = default;
};

/// As many results as there were pictures, in the model's order. A position may come twice and another one
/// not at all.
struct BatchCaptionReply {
    QList<BatchCaptionResult> results;
    std::optional<Usage> usage;
};

} // namespace ostrelle
