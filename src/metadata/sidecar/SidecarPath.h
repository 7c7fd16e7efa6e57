// SPDX-License-Identifier: GPL-3.0-or-later
#pragma once

#include <QString>

namespace ostrelle {

/// The place of a RAW image's new sidecar: the same path with the last extension replaced by "xmp".
QString sidecarPath(const QString& imagePath);

/// The sidecar that lies beside the image, whatever the case of its extension: with several, ".xmp" counts.
/// Where there is none, the place of a new one. Looks at the disk.
QString findSidecar(const QString& imagePath);

} // namespace ostrelle
