// SPDX-License-Identifier: GPL-3.0-or-later
#pragma once

#include <QByteArrayView>
#include <QString>

namespace ostrelle {

/// Reads an edited JPEG file back and compares it with the original: the caption must be in each place and
/// everything else unchanged. Throws EditRefusal otherwise, so that neither a bug of ours nor an odd file
/// damages a picture.
void checkEmbeddedEdit(QByteArrayView before, QByteArrayView after, const QString& caption);

} // namespace ostrelle
