// SPDX-License-Identifier: GPL-3.0-or-later
#pragma once

#include <QByteArray>
#include <QByteArrayView>

namespace ostrelle {

/// Adjusts the index of a multi-picture file (CIPA DC-007), given without its segment's signature, after the
/// first picture has grown by `growth` bytes: the others now lie `growthBehind` bytes further from the index.
/// An index that cannot be read stays as it is.
QByteArray shiftedMultiPictureIndex(QByteArrayView index, qsizetype growth, qsizetype growthBehind);

} // namespace ostrelle
