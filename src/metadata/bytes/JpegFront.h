// SPDX-License-Identifier: GPL-3.0-or-later
#pragma once

#include <QByteArray>
#include <QFile>

namespace ostrelle {

/// The bytes of an open JPEG file from its start to its picture, and a little of that. The limit is far above
/// what any program writes.
QByteArray readJpegFront(QFile& file);

} // namespace ostrelle
