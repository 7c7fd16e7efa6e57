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

// Which of a sidecar's elements count for what. The document must have a root.

/// The captions in the other language that captions are written in.
QStringList sidecarTranslations(const XmlDocument& document);

/// The known place, event and date. Dates in element form become days in the given zone.
XMPContext sidecarContext(const XmlDocument& document, const QTimeZone& zone);

/// The x-default rights line, trimmed. Logs what it finds on the way.
std::optional<QString> sidecarRights(const XmlDocument& document, PlainLog& log);

/// The first creator, trimmed.
std::optional<QString> sidecarCreator(const XmlDocument& document);

} // namespace ostrelle
