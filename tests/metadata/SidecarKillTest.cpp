// SPDX-License-Identifier: GPL-3.0-or-later
#include "metadata/SidecarBytes.h"
#include "support/KilledWriter.h"

namespace ostrelle {

using namespace Qt::StringLiterals;

TEST(SidecarKill, AKilledWriterLeavesTheOldFileOrTheNewOne) {
    constexpr int kills = 400;
    const SidecarFile file(subject("<odd:field>&#65;</odd:field>" + QByteArray(50'000, ' ')));
    const auto written = [&file](const QString& caption) {
        XMPWriter().writeDefaultCaption(caption, file.path());
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
            XMPWriter().writeDefaultCaption(oneCaption, file.path());
            XMPWriter().writeDefaultCaption(otherCaption, file.path());
        },
        [&] {
            const QByteArray found = file.bytes();
            ones += found == one ? 1 : 0;
            return found == one || found == other;
        });
    EXPECT_EQ(strangersBeside(file.folder(), u"IMG_0001.xmp"_s), QStringList());
    EXPECT_GT(ones, 0) << "the writer never got to write";
    EXPECT_LT(ones, kills) << "the writer never got to write";
}

} // namespace ostrelle
