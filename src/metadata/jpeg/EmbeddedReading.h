// SPDX-License-Identifier: GPL-3.0-or-later
#pragma once

#include "metadata/facts/ImageFacts.h"
#include "metadata/facts/XMPContext.h"
#include "metadata/jpeg/EmbeddedMetadata.h"
#include "platform/PlainLog.h"

#include <QTimeZone>

namespace ostrelle {

// Which of the places in a JPEG's metadata counts for what. All results are trimmed.

/// Empty text means that the file was looked at and has no caption: the photographer may have cleared it.
/// Nothing means that no field for it was ever written.
std::optional<QString> embeddedCaption(const EmbeddedMetadata& metadata, PlainLog& log);

/// Dates become days in the given zone.
XMPContext embeddedContext(const EmbeddedMetadata& metadata, const QTimeZone& zone, PlainLog& log);

std::optional<QString> embeddedRights(const EmbeddedMetadata& metadata);
std::optional<QString> embeddedCreator(const EmbeddedMetadata& metadata);

/// All of these, with their log lines.
MetadataReading embeddedReading(const EmbeddedMetadata& metadata, const QTimeZone& zone);

} // namespace ostrelle
