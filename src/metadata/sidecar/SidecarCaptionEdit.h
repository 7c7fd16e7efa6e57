// SPDX-License-Identifier: GPL-3.0-or-later
#pragma once

#include "metadata/xml/XmlDocument.h"

namespace ostrelle {

/// Returns the document's bytes with the caption in the one dc:description of its subject, as x-default and
/// as en-US, and with no other dc:description. Drops characters that XML cannot hold; all other fields keep
/// their bytes. Throws XMPError::writeFailed when the document's structure makes the edit impossible.
QByteArray withCaption(const XmlDocument& document, const QString& caption);

} // namespace ostrelle
