// SPDX-License-Identifier: GPL-3.0-or-later
#pragma once

#include <QByteArray>
#include <QByteArrayView>

namespace ostrelle {

/// The index of a multi-picture file (CIPA DC-007), without its segment's signature, for a file whose first
/// picture has grown: the others lie `growthBehind` bytes further from the index, and the first is `growth`
/// bytes longer. An index that cannot be read stays as it is.
QByteArray shiftedMultiPictureIndex(QByteArrayView index, qsizetype growth, qsizetype growthBehind);

} // namespace ostrelle
