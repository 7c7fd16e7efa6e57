// SPDX-License-Identifier: GPL-3.0-or-later
#pragma once

#include "metadata/ImageFacts.h"

#include <QDateTime>
#include <QString>
#include <optional>

namespace ostrelle {

/// An image that auto mode's scan wants captioned, as it was when the scan looked at it.
struct ImageRequest {
    QString file;
    QDateTime seenAt;
    /// What its metadata said; nothing when they could not be read or the sidecar was made by the scan.
    std::optional<ImageFacts> facts = {};
};

} // namespace ostrelle
