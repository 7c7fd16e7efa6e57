// SPDX-License-Identifier: GPL-3.0-or-later
#pragma once

#include <gtest/gtest.h>
#include <sys/wait.h>
#include <unistd.h>

#include <QElapsedTimer>
#include <QRandomGenerator>
#include <csignal>
#include <functional>

namespace ostrelle {

/// Lets a child process write again and again, kills it at any instant of up to three rounds, and looks at
/// what it leaves behind; so many times. `check` returns whether that is as it should be.
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

} // namespace ostrelle
