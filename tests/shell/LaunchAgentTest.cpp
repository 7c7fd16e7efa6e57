// SPDX-License-Identifier: GPL-3.0-or-later
#include "platform/Files.h"
#include "platform/ProcessCommands.h"
#include "shell/ShellFixture.h"
#include "shell/desktop/PhotoMechanicMonitoring.h"
#include "support/Await.h"
#include "support/FileFacts.h"

#include <gtest/gtest.h>

#include <QDir>
#include <QElapsedTimer>
#include <QFileInfo>
#include <QProcess>
#include <QTemporaryDir>

namespace ostrelle {

using namespace Qt::StringLiterals;

namespace {

const QString unit = u"com.tobinvasquel.Ostrelle-Captions.Helper.service"_s;

class LaunchAgentTest : public testing::Test {
protected:
    LaunchAgentTest() { writeFile(paths.helper, "#!/bin/sh\n"); }

    /// Lets the agent's waits pass.
    void await(QCoro::Task<> task) {
        waitUntil([&] {
            world.clock.advance(std::chrono::milliseconds(100));
            return task.isReady();
        });
    }
    QStringList log() {
        QStringList lines = world.console.lines.filter(u"[AppDelegate] "_s);
        world.console.lines.clear();
        return lines.replaceInStrings(u"[AppDelegate] "_s, QString());
    }
    QString unitPath() const { return paths.config + u"/systemd/user/"_s + unit; }

    ShellWorld world;
    LaunchPaths paths{.helper = world.folder.filePath(u"helper with blanks.sh"_s),
                      .program = u"/opt/100% $HOME/\"ostrelle\""_s,
                      .config = world.folder.filePath(u"config"_s)};
    RecordedCommands& commands = world.commands;
    LaunchAgent agent{paths, commands, world.clock, world.console};
};

} // namespace

TEST_F(LaunchAgentTest, IsInstalledStartedVerifiedAndRemoved) {
    await(agent.install());
    EXPECT_EQ(
        log(),
        QStringList(
            {u"✓ Killed helper script processes"_s, u"No Launch Agent plist found (already removed)"_s,
             u"✓ Verified: All helper processes stopped"_s, u"✓ Verified: Plist file successfully removed"_s,
             u"Launch Agent uninstall completed"_s, u"✓ Using pre-bundled helper script: "_s + paths.helper,
             u"Launch Agent plist installed at "_s + unitPath(),
             u"✓ Launch Agent loaded successfully (using bootstrap)"_s,
             u"✓ Launch Agent kickstarted successfully"_s, u"✓ Verified: Launch Agent is running"_s,
             u"✓ Verified: Helper script process is running"_s}));
    const QByteArray contents = readFile(unitPath(), 10000);
    EXPECT_TRUE(contents.contains("Restart=on-failure"));
    EXPECT_TRUE(contents.contains("helper with blanks.sh\" \"/opt/100%% $$HOME/\\\"ostrelle\\\"\" \""))
        << contents.constData();

    commands.lines.clear();
    commands.statuses = {{u"is-active"_s, 3}};
    await(agent.uninstall());
    EXPECT_EQ(log(),
              QStringList({u"✓ Killed helper script processes"_s, u"✓ Launch Agent bootout successful"_s,
                           u"✓ Launch Agent unloaded from launchctl"_s, u"✓ Launch Agent plist removed"_s,
                           u"✓ Verified: All helper processes stopped"_s,
                           u"✓ Verified: Plist file successfully removed"_s,
                           u"Launch Agent uninstall completed"_s}));
    QStringList steps;
    for (const QString& line : commands.lines) {
        EXPECT_TRUE(line.startsWith(u"systemctl --user --quiet "_s)) << line.toStdString();
        steps.append(line.section(u' ', 3, 3));
    }
    EXPECT_EQ(steps.join(u' '), u"show-environment kill disable stop reset-failed kill is-active");
}

TEST_F(LaunchAgentTest, EachFailureHasItsLine) {
    const struct {
        QHash<QString, int> statuses;
        QString line;
    } rows[] = {
        {{{u" enable "_s, 1}}, u"✓ Launch Agent loaded successfully (using load)"_s},
        {{{u"quiet enable com"_s, 1}, {u"reenable"_s, 5}}, u"✗ Failed to load Launch Agent (status: 5)"_s},
        {{{u"quiet enable com"_s, 1}, {u"reenable"_s, 5}}, u"✓ Launch Agent loaded on retry"_s},
        {{{u"restart"_s, 1}}, u"⚠️ Kickstart failed (may already be running)"_s},
        {{{u"is-enabled"_s, 1}}, u"✗ Launch Agent verification failed - may not be running properly"_s},
        {{{u"is-active"_s, 3}},
         u"✗ Helper script process still not running - Launch Agent may not be working"_s}};
    for (const auto& row : rows) {
        commands.statuses = row.statuses;
        await(agent.install());
        EXPECT_TRUE(log().contains(row.line)) << row.line.toStdString();
    }
    commands.statuses.clear();
    QFile::remove(paths.helper);
    await(agent.install());
    EXPECT_TRUE(log().contains(u"✗ ERROR: Helper script does not exist at: "_s + paths.helper));
    EXPECT_FALSE(QFileInfo::exists(unitPath()));
    writeFile(paths.helper, "");
    QDir().rmdir(QFileInfo(unitPath()).path());
    writeFile(QFileInfo(unitPath()).path(), "a file in place of the folder");
    await(agent.install());
    EXPECT_EQ(world.console.count(u"✗ ERROR: Failed to write Launch Agent plist: "_s), 1);
}

TEST_F(LaunchAgentTest, WithoutAUserManagerTheEntryOfTheAutostartFolderStartsTheHelper) {
    commands.statuses = {{u"show-environment"_s, 1}};
    await(agent.install());
    const QString entry = paths.config + u"/autostart/com.tobinvasquel.Ostrelle-Captions.Helper.desktop"_s;
    EXPECT_TRUE(
        readFile(entry, 10000).contains("blanks.sh\" \"/opt/100%% \\\\$HOME/\\\\\"ostrelle\\\\\"\" \""))
        << readFile(entry, 10000).constData();
    EXPECT_TRUE(commands.lines.contains(u"setsid --fork %1 %2 %3"_s.arg(paths.helper, paths.program, entry)));
    await(agent.uninstall());
    EXPECT_FALSE(QFileInfo::exists(entry));
    EXPECT_TRUE(commands.lines.filter(u"systemctl"_s).filter(unit).isEmpty());
}

TEST_F(LaunchAgentTest, ASwitchTurnedManyTimesEndsInItsLastState) {
    PhotoMechanicMonitoring monitoring(
        paths, world.settings, commands, world.workspace, [] {}, world.clock, world.console);
    for (int time = 0; time < 11; ++time) {
        world.settings.setLaunchWithPhotoMechanic(time % 2 == 0);
        monitoring.setupPhotoMechanicMonitoring();
    }
    await(monitoring.finished());
    EXPECT_TRUE(QFileInfo::exists(unitPath()));
    EXPECT_LE(world.console.count(u"Installing Launch Agent"_s), 2);
    world.settings.setLaunchWithPhotoMechanic(false);
    monitoring.setupPhotoMechanicMonitoring();
    monitoring.stop();
    await(monitoring.finished());
    EXPECT_FALSE(QFileInfo::exists(unitPath())) << "a switch turned just before the end counts";
}

TEST(StartedPrograms, TellOfAStartOnceAndNotOfWhatRanBefore) {
    const QTemporaryDir folder;
    VirtualClock clock;
    const auto begin = [&folder](const QString& process, const QByteArray& name,
                                 const QByteArray& command = {}) {
        QDir(folder.path()).mkpath(process);
        writeFile(folder.filePath(process + u"/comm"_s), name + '\n');
        writeFile(folder.filePath(process + u"/cmdline"_s), command);
    };
    begin(u"10"_s, "Photo Mechanic");
    begin(u"self"_s, "Photo Mechanic");
    StartedPrograms programs(clock, &isPhotoMechanic, folder.path());
    int starts = 0;
    QObject::connect(&programs, &StartedPrograms::started, &programs, [&starts] { ++starts; });
    const auto startsAfterLook = [&] {
        clock.advance(std::chrono::seconds(2));
        await(programs.finished());
        return starts;
    };
    await(programs.finished());
    begin(u"11"_s, "Photo Mechanic.");
    EXPECT_EQ(startsAfterLook(), 0) << "it runs already";
    QDir(folder.filePath(u"10"_s)).removeRecursively();
    QDir(folder.filePath(u"11"_s)).removeRecursively();
    begin(u"12"_s, "vim", QByteArray("vim\0PhotoMechanic", 17));
    begin(u"13"_s, "wine", QByteArray("wine\0Photo Mechanic.txt", 23));
    EXPECT_EQ(startsAfterLook(), 0);
    begin(u"14"_s, "wine64-preload", QByteArray("C:\\Photo Mechanic 6.exe\0", 24));
    EXPECT_EQ(startsAfterLook(), 1);
    EXPECT_EQ(startsAfterLook(), 1);
    QDir(folder.filePath(u"14"_s)).removeRecursively();
    begin(u"15"_s, "PhotoMechanic");
    EXPECT_EQ(startsAfterLook(), 2) << "quit and started again between two looks";
}

TEST(ProcessCommands, EndInTheirBoundWhateverTheyDo) {
    ProcessCommands commands;
    const auto run = [&commands](const QString& script) {
        return await(commands.run(u"sh"_s, {u"-c"_s, script}));
    };
    EXPECT_EQ(run(u"echo words; exit 3"_s).status, 3);
    EXPECT_EQ(run(u"echo words"_s).output, "words\n");
    EXPECT_EQ(run(u"head -c 1000000 /dev/zero"_s).output.size(), 65536);
    ProcessCommands impatient(std::chrono::milliseconds(100));
    EXPECT_EQ(await(impatient.run(u"sh"_s, {u"-c"_s, u"trap '' TERM; exec sleep 1000"_s})).status,
              std::nullopt);
    EXPECT_EQ(await(commands.run(u"/no/such/program"_s, {})).status, std::nullopt);
}

} // namespace ostrelle
