// SPDX-License-Identifier: GPL-3.0-or-later
#include "metadata/SidecarBytes.h"

#include <sys/wait.h>
#include <unistd.h>

#include <QDir>
#include <QElapsedTimer>
#include <QRandomGenerator>
#include <QRegularExpression>
#include <csignal>

namespace ostrelle {

using namespace Qt::StringLiterals;

namespace {

const QString oneCaption = u"One"_s;
const QString otherCaption = QString(20'000, u'x');

[[noreturn]] void writeForEver(const QString& sidecar) {
    const XMPWriter xmp;
    for (;;) {
        xmp.writeDefaultCaption(oneCaption, sidecar);
        xmp.writeDefaultCaption(otherCaption, sidecar);
    }
}

} // namespace

TEST(SidecarKill, AKilledWriterLeavesTheOldFileOrTheNewOne) {
    constexpr int kills = 400;
    const QByteArray original = subject("<odd:field>&#65;</odd:field>" + QByteArray(50'000, ' '));
    SidecarFile file(original);
    XMPWriter().writeDefaultCaption(oneCaption, file.path());
    const QByteArray one = file.bytes();
    XMPWriter().writeDefaultCaption(otherCaption, file.path());
    const QByteArray other = file.bytes();
    QElapsedTimer timer;
    timer.start();
    XMPWriter().writeDefaultCaption(otherCaption, file.path());
    const quint32 longestLife =
        static_cast<quint32>(timer.nsecsElapsed() / 1000) * 6 + 1000; // of a writer, in microseconds
    int ones = 0;
    for (int kill = 0; kill < kills; ++kill) {
        const pid_t writer = ::fork();
        ASSERT_GE(writer, 0);
        if (writer == 0) {
            writeForEver(file.path());
        }
        ::usleep(QRandomGenerator::global()->bounded(longestLife));
        ::kill(writer, SIGKILL);
        ::waitpid(writer, nullptr, 0);
        const QByteArray found = file.bytes();
        ASSERT_TRUE(found == one || found == other)
            << "after kill " << kill << ": " << found.size() << " bytes";
        ones += found == one ? 1 : 0;
    }
    const QStringList others =
        QDir(file.folder())
            .entryList(QDir::Files | QDir::Hidden)
            .filter(QRegularExpression(u"^(?!IMG_0001.xmp$|[.]IMG_0001[.]xmp[.]ostrelle-)"_s));
    EXPECT_TRUE(others.isEmpty()) << others.join(u' ').toStdString();
    EXPECT_GT(ones, 0) << "the writer never got to write";
    EXPECT_LT(ones, kills) << "the writer never got to write";
}

} // namespace ostrelle
