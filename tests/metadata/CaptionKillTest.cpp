// SPDX-License-Identifier: GPL-3.0-or-later
#include "metadata/JpegMetadataBytes.h"
#include "metadata/SidecarBytes.h"
#include "metadata/rendition/JpegDecoder.h"
#include "support/KilledWriter.h"
#include "support/RecordingLog.h"

namespace ostrelle {

TEST(CaptionKill, AKilledWriterLeavesTheOldFileOrTheNewOne) {
    // Large enough that their bytes are not written in one go.
    const SidecarFile sidecar(subject("<odd:field>&#65;</odd:field>" + QByteArray(50'000, ' ')));
    const auto writeSidecar = [&](const QString& caption) {
        XMPWriter().writeDefaultCaption(caption, sidecar.path());
    };
    killCaptionWriters(400, writeSidecar, [&] { return sidecar.bytes(); });
    EXPECT_EQ(strangersBeside(sidecar.folder(), u"IMG_0001.xmp"_s), QStringList());

    RecordingLog log;
    const ImageFile image(jpegFile(SportsScene(900, 600, 1).image()));
    const auto writeImage = [&](const QString& caption) {
        XMPWriter().writeEmbeddedCaption(caption, image.path(), log);
    };
    killCaptionWriters(200, writeImage, [&] {
        EXPECT_NO_THROW(decodeJpeg(image.path(), 64));
        return image.bytes();
    });
    EXPECT_EQ(strangersBeside(image.folder(), u"IMG_0001.JPG"_s), QStringList());
}

} // namespace ostrelle
