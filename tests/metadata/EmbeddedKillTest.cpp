// SPDX-License-Identifier: GPL-3.0-or-later
#include "metadata/JpegDecoder.h"
#include "metadata/JpegMetadataBytes.h"
#include "metadata/XMPWriter.h"
#include "support/KilledWriter.h"
#include "support/RecordingLog.h"

namespace ostrelle {

using namespace Qt::StringLiterals;

TEST(EmbeddedKill, AKilledWriterLeavesTheOldFileOrTheNewOne) {
    constexpr int kills = 200;
    RecordingLog log;
    // Large enough that its bytes are not written in one go.
    const ImageFile file(jpegFile(SportsScene(900, 600, 1).image()));
    const auto written = [&](const QString& caption) {
        XMPWriter().writeEmbeddedCaption(caption, file.path(), log);
        EXPECT_NO_THROW(decodeJpeg(file.path(), 64));
        return file.bytes();
    };
    const QString oneCaption = u"One"_s;
    const QString otherCaption(20'000, u'x');
    const QByteArray one = written(oneCaption);
    const QByteArray other = written(otherCaption);
    int ones = 0;
    killWriters(
        kills,
        [&] {
            XMPWriter().writeEmbeddedCaption(oneCaption, file.path(), log);
            XMPWriter().writeEmbeddedCaption(otherCaption, file.path(), log);
        },
        [&] {
            const QByteArray found = file.bytes();
            ones += found == one ? 1 : 0;
            return found == one || found == other;
        });
    EXPECT_EQ(strangersBeside(file.folder(), u"IMG_0001.JPG"_s), QStringList());
    EXPECT_GT(ones, 0) << "the writer never got to write";
    EXPECT_LT(ones, kills) << "the writer never got to write";
    EXPECT_EQ(written(oneCaption), one) << "what was left behind is in nobody's way";
}

} // namespace ostrelle
