// SPDX-License-Identifier: GPL-3.0-or-later
#pragma once

#include <QString>

namespace ostrelle {

/// The path of a RAW image's new sidecar: the same path with the last extension replaced by "xmp".
QString sidecarPath(const QString& imagePath);

/// The sidecar beside the image, with its extension in any case; ".xmp" wins over others. Without one, the
/// path of a new one. Looks at the disk.
QString findSidecar(const QString& imagePath);

} // namespace ostrelle
