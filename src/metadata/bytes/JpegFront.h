// SPDX-License-Identifier: GPL-3.0-or-later
#pragma once

#include <QByteArray>
#include <QFile>

namespace ostrelle {

/// The bytes of an open JPEG file in front of its picture, with a little of that, from the file's begin. Far
/// more than any program writes is not read.
QByteArray readJpegFront(QFile& file);

} // namespace ostrelle
