// SPDX-License-Identifier: GPL-3.0-or-later
#pragma once

#include "metadata/facts/XMPContext.h"
#include "metadata/xml/XmlDocument.h"
#include "platform/PlainLog.h"

#include <QString>
#include <QStringList>
#include <QTimeZone>
#include <optional>

namespace ostrelle {

// Which of a sidecar's elements count for what. The document has a root.

/// The captions in the other language that a caption is written to.
QStringList sidecarTranslations(const XmlDocument& document);

/// What is known of place, event and date. Dates in element form become days in the given zone.
XMPContext sidecarContext(const XmlDocument& document, const QTimeZone& zone);

/// The rights line in x-default, trimmed. Tells the log what it finds on the way.
std::optional<QString> sidecarRights(const XmlDocument& document, PlainLog& log);

/// The first creator, trimmed.
std::optional<QString> sidecarCreator(const XmlDocument& document);

} // namespace ostrelle
