// SPDX-License-Identifier: GPL-3.0-or-later
#pragma once

#include "metadata/xml/XmlAttribute.h"

#include <QList>

namespace ostrelle {

/// The spans of character data in a range of well-formed content without elements: each run between comments
/// and processing instructions, including CDATA sections. Runs of blanks only are left out.
QList<XmlSpan> characterDataIn(QByteArrayView bytes, XmlSpan range, XmlEncoding encoding);

} // namespace ostrelle
