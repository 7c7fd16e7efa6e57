// SPDX-License-Identifier: GPL-3.0-or-later
#pragma once

#include "metadata/xml/XmlAttribute.h"

#include <QList>

namespace ostrelle {

/// Where the character data stand in a range of well-formed content that holds no element: each run between
/// comments and processing instructions, CDATA sections included. Runs of nothing but blanks are left out.
QList<XmlSpan> characterDataIn(QByteArrayView bytes, XmlSpan range, XmlEncoding encoding);

} // namespace ostrelle
