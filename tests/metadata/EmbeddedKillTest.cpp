// SPDX-License-Identifier: GPL-3.0-or-later
#include "metadata/JpegMetadataBytes.h"
#include "metadata/XMPWriter.h"
#include "metadata/rendition/JpegDecoder.h"
#include "support/KilledWriter.h"
#include "support/RecordingLog.h"

namespace ostrelle {

TEST(EmbeddedKill, AKilledWriterLeavesTheOldFileOrTheNewOne) {
    RecordingLog log;
    // Large enough that its bytes are not written in one go.
    const ImageFile file(jpegFile(SportsScene(900, 600, 1).image()));
    const auto write = [&](const QString& caption) {
        XMPWriter().writeEmbeddedCaption(caption, file.path(), log);
    };
    killCaptionWriters(200, write, [&file] {
        EXPECT_NO_THROW(decodeJpeg(file.path(), 64));
        return file.bytes();
    });
    EXPECT_EQ(strangersBeside(file.folder(), u"IMG_0001.JPG"_s), QStringList());
}

} // namespace ostrelle
