// SPDX-License-Identifier: GPL-3.0-or-later
#pragma once

#include "metadata/facts/ImageFacts.h"
#include "metadata/facts/XMPContext.h"
#include "metadata/jpeg/EmbeddedMetadata.h"
#include "platform/PlainLog.h"

#include <QTimeZone>
#include <optional>

namespace ostrelle {

// Which field of a JPEG's metadata counts for what. All results are trimmed.

/// Empty when the file has IPTC data without a caption, which the photographer may have cleared. Nothing when
/// no field for it was ever written.
std::optional<QString> embeddedCaption(const EmbeddedMetadata& metadata, PlainLog& log);

/// Dates become days in the given zone.
XMPContext embeddedContext(const EmbeddedMetadata& metadata, const QTimeZone& zone, PlainLog& log);

std::optional<QString> embeddedRights(const EmbeddedMetadata& metadata);
std::optional<QString> embeddedCreator(const EmbeddedMetadata& metadata);

/// All of these, with their log lines.
MetadataReading embeddedReading(const EmbeddedMetadata& metadata, const QTimeZone& zone);

} // namespace ostrelle
