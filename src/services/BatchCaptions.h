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
    QString filename; ///< as given to the model
    QString context;
};

/// The model's answer for one picture.
struct BatchCaptionResult {
    qsizetype position = 0; ///< of the picture in the request, from 0; file names may repeat
    QString filename;
    QString caption; ///< trimmed, may be empty

    bool operator==(const BatchCaptionResult&) const = default;
};

/// As many results as pictures, in the model's order. A position may appear twice, and another not at all.
struct BatchCaptionReply {
    QList<BatchCaptionResult> results;
    std::optional<Usage> usage;
};

} // namespace ostrelle
