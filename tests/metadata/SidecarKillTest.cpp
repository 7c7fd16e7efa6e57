// SPDX-License-Identifier: GPL-3.0-or-later
#include "metadata/SidecarBytes.h"
#include "support/KilledWriter.h"

namespace ostrelle {

TEST(SidecarKill, AKilledWriterLeavesTheOldFileOrTheNewOne) {
    const SidecarFile file(subject("<odd:field>&#65;</odd:field>" + QByteArray(50'000, ' ')));
    const auto write = [&file](const QString& caption) {
        XMPWriter().writeDefaultCaption(caption, file.path());
    };
    killCaptionWriters(400, write, [&file] { return file.bytes(); });
    EXPECT_EQ(strangersBeside(file.folder(), u"IMG_0001.xmp"_s), QStringList());
}

} // namespace ostrelle
