// SPDX-License-Identifier: GPL-3.0-or-later
#pragma once

#include <QByteArray>
#include <QByteArrayView>
#include <QString>

namespace ostrelle {

/// An EXIF block (without its segment's signature) with the caption as image description and user comment.
/// Nothing of the old block moves, as maker notes point into it in ways of their own: what is new stands
/// behind. An empty block gives a new one. Throws EditRefusal.
QByteArray withExifCaption(QByteArrayView block, const QString& caption);

} // namespace ostrelle
