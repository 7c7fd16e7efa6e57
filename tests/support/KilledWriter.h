// SPDX-License-Identifier: GPL-3.0-or-later
#pragma once

#include <gtest/gtest.h>
#include <sys/wait.h>
#include <unistd.h>

#include <QByteArray>
#include <QDir>
#include <QElapsedTimer>
#include <QRandomGenerator>
#include <QRegularExpression>
#include <QString>
#include <QStringList>
#include <csignal>
#include <functional>

namespace ostrelle {

using namespace Qt::StringLiterals;

/// Starts a child process that writes over and over, kills it at a random moment within about three rounds,
/// and checks what it leaves behind; repeats that `kills` times. `check` returns true if all is well.
inline void killWriters(int kills, const std::function<void()>& write, const std::function<bool()>& check) {
    QElapsedTimer timer;
    timer.start();
    write();
    const auto round = static_cast<quint32>(timer.nsecsElapsed() / 1000);
    for (int kill = 0; kill < kills; ++kill) {
        const pid_t writer = ::fork();
        ASSERT_GE(writer, 0);
        if (writer == 0) {
            for (;;) {
                write();
            }
        }
        ::usleep(QRandomGenerator::global()->bounded(3 * round + 1000));
        ::kill(writer, SIGKILL);
        ::waitpid(writer, nullptr, 0);
        ASSERT_TRUE(check()) << "after kill " << kill;
    }
}

/// killWriters() with a short and a long caption in turn. After each kill, the file must be one of the two
/// that an undisturbed `write` leaves; both must occur.
inline void killCaptionWriters(int kills, const std::function<void(const QString& caption)>& write,
                               const std::function<QByteArray()>& bytes) {
    const QString oneCaption = u"One"_s;
    const QString otherCaption(20'000, u'x');
    write(oneCaption);
    const QByteArray one = bytes();
    write(otherCaption);
    const QByteArray other = bytes();
    int ones = 0;
    const auto writeBoth = [&] {
        write(oneCaption);
        write(otherCaption);
    };
    killWriters(kills, writeBoth, [&] {
        const QByteArray found = bytes();
        ones += found == one ? 1 : 0;
        return found == one || found == other;
    });
    EXPECT_GT(ones, 0) << "the writer never got to write";
    EXPECT_LT(ones, kills) << "the writer never got to write";
    write(oneCaption);
    EXPECT_EQ(bytes(), one) << "what was left behind is in nobody's way";
}

/// The names in the folder other than the file itself and the temporary file that a kill just before the
/// rename leaves.
inline QStringList strangersBeside(const QString& folder, const QString& name) {
    const QRegularExpression stranger(
        u"^(?!(%1|[.]%1[.]ostrelle-[0-9a-z]+)$)"_s.arg(QRegularExpression::escape(name)));
    return QDir(folder).entryList(QDir::AllEntries | QDir::NoDotAndDotDot | QDir::Hidden).filter(stranger);
}

} // namespace ostrelle
