// SPDX-License-Identifier: GPL-3.0-or-later
#include "metadata/MetadataStamp.h"

#include "metadata/facts/ImageKind.h"
#include "metadata/sidecar/SidecarPath.h"

namespace ostrelle {

MetadataStamp MetadataStamp::of(const QString& image) {
    MetadataStamp stamp{.image = FileStamp::at(image)};
    if (!isJpegImage(image)) {
        stamp.sidecar = FileStamp::at(sidecarPath(image)); // the usual one, without looking for others
        if (!stamp.sidecar) {
            stamp.sidecar = FileStamp::at(findSidecar(image));
        }
    }
    return stamp;
}

} // namespace ostrelle
