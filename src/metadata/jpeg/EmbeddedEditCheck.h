// SPDX-License-Identifier: GPL-3.0-or-later
#pragma once

#include <QByteArrayView>
#include <QString>

namespace ostrelle {

/// Reads an edited JPEG file anew and compares it with what it was: the caption has to stand in each place
/// and all else has to be the same. Throws EditRefusal when it is not, so that no fault of ours or oddity of
/// a file reaches a picture.
void checkEmbeddedEdit(QByteArrayView before, QByteArrayView after, const QString& caption);

} // namespace ostrelle
