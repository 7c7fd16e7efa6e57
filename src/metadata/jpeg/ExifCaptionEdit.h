// SPDX-License-Identifier: GPL-3.0-or-later
#pragma once

#include <QByteArray>
#include <QByteArrayView>
#include <QString>

namespace ostrelle {

/// Returns an EXIF block (without its segment's signature) with the caption as image description and user
/// comment. Nothing in the old block moves, since maker notes point into it in undocumented ways; new data is
/// appended. An empty block yields a new one. Throws EditRefusal.
QByteArray withExifCaption(QByteArrayView block, const QString& caption);

} // namespace ostrelle
