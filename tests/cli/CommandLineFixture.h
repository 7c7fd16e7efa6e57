// SPDX-License-Identifier: GPL-3.0-or-later
#pragma once

#include "standins/DngBuilder.h"
#include "support/FileFacts.h"

#include <gtest/gtest.h>

#include <QProcess>
#include <QProcessEnvironment>
#include <QTemporaryDir>

namespace ostrelle {

/// The result of a finished program.
struct Result {
    int status = -1;
    QString output;
    QString errors;
};

/// Runs the command-line program as a process.
class CommandLineTest : public testing::Test {
protected:
    /// Gives it its own home and desktop, so that the tester's stay untouched.
    void start(QProcess& program, const QStringList& arguments) const {
        QProcessEnvironment environment = QProcessEnvironment::systemEnvironment();
        environment.insert(QStringLiteral("XDG_CONFIG_HOME"), folder.filePath(QStringLiteral("config")));
        environment.insert(QStringLiteral("XDG_DATA_HOME"), folder.filePath(QStringLiteral("data")));
        environment.insert(QStringLiteral("DBUS_SESSION_BUS_ADDRESS"),
                           QStringLiteral("unix:path=/nonexistent"));
        program.setProcessEnvironment(environment);
        program.setWorkingDirectory(folder.path());
        program.start(QStringLiteral(CAPTION_PROGRAM), arguments);
    }
    Result run(const QStringList& arguments, const QByteArray& input = {}) const {
        QProcess program;
        start(program, arguments);
        program.write(input);
        program.closeWriteChannel();
        EXPECT_TRUE(program.waitForFinished(60'000));
        EXPECT_EQ(program.exitStatus(), QProcess::NormalExit);
        return {program.exitCode(), QString::fromUtf8(program.readAllStandardOutput()),
                QString::fromUtf8(program.readAllStandardError())};
    }
    QString write(const QString& name, const QByteArray& bytes) const {
        writeFile(folder.filePath(name), bytes);
        return name;
    }
    QString rawImage(const QString& name) const { return write(name, dngFile(SportsScene(300, 200, 1))); }
    QString roster() const { return write(QStringLiteral("roster.txt"), "12\tSam Abel\n"); }
    void storeKey() const { ASSERT_EQ(run({QStringLiteral("key")}, "demo-key\n").status, 0); }

    QTemporaryDir folder;
    const QString settings =
        folder.filePath(QStringLiteral("config/com.tobinvasquel.OstrelleCaptions/defaults.json"));
};

} // namespace ostrelle
