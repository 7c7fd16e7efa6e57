// SPDX-License-Identifier: GPL-3.0-or-later
#include "metadata/JpegMetadataBytes.h"
#include "metadata/SidecarBytes.h"
#include "support/KilledWriter.h"
#include "support/RecordingLog.h"

namespace ostrelle {

using namespace Qt::StringLiterals;

TEST(CaptionKill, AKilledWriterLeavesTheOldFilesOrTheNewOnes) {
    // Too large to be written in one go.
    const SidecarFile sidecar(subject("<odd:field>&#65;</odd:field>" + QByteArray(50'000, ' ')));
    const TemporaryImage image(jpegFile(SportsScene(900, 600, 1).image()));
    RecordingLog log;
    const auto write = [&](const QString& caption) {
        XMPWriter().writeDefaultCaption(caption, sidecar.path());
        XMPWriter().writeEmbeddedCaption(caption, image.path(), log);
        return std::pair(sidecar.bytes(), image.bytes());
    };
    const QString longCaption(20'000, u'x');
    const auto other = write(longCaption);
    const auto one = write(u"One"_s);
    constexpr int kills = 400;
    int ones = 0;
    const auto writeBoth = [&] {
        write(longCaption);
        write(u"One"_s);
    };
    killWriters(kills, writeBoth, [&] {
        const auto found = std::pair(sidecar.bytes(), image.bytes());
        ones += found == one ? 1 : 0;
        return (found.first == one.first || found.first == other.first) &&
               (found.second == one.second || found.second == other.second);
    });
    EXPECT_GT(ones, 0) << "no kill left the short caption";
    EXPECT_LT(ones, kills) << "every kill left the short caption";
    EXPECT_EQ(write(longCaption), other) << "leftovers do not get in the way";
}

} // namespace ostrelle
