// SPDX-License-Identifier: GPL-3.0-or-later
#pragma once

#include "metadata/xml/XmlDocument.h"

namespace ostrelle {

/// The document's bytes with the caption in the one dc:description of its subject, as x-default and as
/// en-US, and with no other dc:description. Characters that XML cannot hold are left out; every other field
/// stays the same bytes. Throws XMPError::writeFailed when the structure of the document defeats the edit.
QByteArray withCaption(const XmlDocument& document, const QString& caption);

} // namespace ostrelle
