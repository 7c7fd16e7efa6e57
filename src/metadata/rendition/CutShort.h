// SPDX-License-Identifier: GPL-3.0-or-later
#pragma once

#include <QString>

namespace ostrelle {

/// True if there should be more of the image than there is, as when its upload has stopped half-way: a JPEG
/// whose picture does not end, or a RAW file whose own tables name bytes beyond its end. A file of another
/// kind is taken for whole. Reads a JPEG through to its end. Throws ExtractError if it cannot be opened.
bool isCutShort(const QString& path);

} // namespace ostrelle
