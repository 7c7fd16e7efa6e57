// SPDX-License-Identifier: GPL-3.0-or-later
#include "metadata/MetadataStamp.h"

#include "metadata/facts/ImageKind.h"
#include "metadata/sidecar/SidecarPath.h"

namespace ostrelle {

MetadataStamp MetadataStamp::of(const QString& image) {
    return {.image = FileStamp::at(image),
            .sidecar = isJpegImage(image) ? std::nullopt : FileStamp::at(findSidecar(image))};
}

} // namespace ostrelle
