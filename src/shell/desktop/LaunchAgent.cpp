// SPDX-License-Identifier: GPL-3.0-or-later
#include "shell/desktop/LaunchAgent.h"

#include "core/Attempt.h"
#include "core/OffMainThread.h"
#include "platform/FileError.h"
#include "platform/Files.h"

#include <QFile>
#include <QFileInfo>
#include <utility>

namespace ostrelle {

using namespace Qt::StringLiterals;
using std::chrono::milliseconds;

namespace {

QCoro::Task<bool> exists(QString path) {
    auto look = [path] { return QFileInfo::exists(path); };
    const bool isThere = co_await offMainThread(look);
    co_return isThere;
}

/// Empty when the file is gone, otherwise why it is not.
QCoro::Task<QString> removed(QString path) {
    auto remove = [path] {
        QFile file(path);
        return file.remove() ? QString() : file.errorString();
    };
    const QString failure = co_await offMainThread(remove);
    co_return failure;
}

} // namespace

LaunchAgent::LaunchAgent(LaunchPaths paths, CommandRunner& commands, Clock& clock, PlainLog& log)
    : m_paths(std::move(paths)), m_commands(commands), m_clock(clock), m_log(log) {}

QCoro::Task<> LaunchAgent::install() {
    co_await findJob();
    co_await uninstallLaunchAgent();
    co_await installLaunchAgent();
}

QCoro::Task<> LaunchAgent::uninstall() {
    co_await findJob();
    co_await uninstallLaunchAgent();
}

QCoro::Task<> LaunchAgent::findJob() {
    const LaunchCommand question = LaunchJob::managerQuestion();
    const CommandResult answer = co_await m_commands.run(question.program, question.arguments);
    m_job = std::make_unique<LaunchJob>(
        answer.isOk() ? LaunchJob::Manager::systemd : LaunchJob::Manager::autostart, m_paths);
}

QCoro::Task<> LaunchAgent::installLaunchAgent() {
    if (m_paths.program.isEmpty()) {
        print(u"Failed to get app bundle path"_s);
        co_return;
    }
    const bool isHelperThere = co_await exists(m_paths.helper);
    if (!isHelperThere) {
        print(u"✗ ERROR: Pre-bundled helper script not found in app bundle!"_s);
        print(u"Expected location: "_s + m_paths.helper);
        print(u"✗ ERROR: Helper script does not exist at: "_s + m_paths.helper);
        co_return;
    }
    const QStringList executable{u"+x"_s, m_paths.helper};
    co_await m_commands.run(u"/bin/chmod"_s,
                            executable); // fails where the system's packages own it, and needs not
    print(u"✓ Using pre-bundled helper script: "_s + m_paths.helper);

    auto write = [path = m_job->path(), contents = m_job->contents()] {
        makeFolder(QFileInfo(path).path());
        replaceFile(path, contents);
        return true;
    };
    const auto written = co_await attemptOffMainThread(write);
    if (!written) {
        print(u"✗ ERROR: Failed to write Launch Agent plist: "_s + written.words());
        co_return;
    }
    print(u"Launch Agent plist installed at "_s + m_job->path());

    for (const LaunchStep step :
         {LaunchStep::pkill, LaunchStep::bootout, LaunchStep::unload, LaunchStep::pkill}) {
        co_await run(step);
    }
    co_await wait(milliseconds(300));
    co_await loadJob();
    co_await wait(milliseconds(500));
    const CommandResult started = co_await run(LaunchStep::kickstart);
    print(started.isOk() ? u"✓ Launch Agent kickstarted successfully"_s
                         : u"⚠️ Kickstart failed (may already be running)"_s);
    co_await wait(milliseconds(1000));
    co_await verifyLaunchAgent();
}

QCoro::Task<> LaunchAgent::loadJob() {
    const CommandResult bootstrap = co_await run(LaunchStep::bootstrap);
    if (bootstrap.isOk()) {
        print(u"✓ Launch Agent loaded successfully (using bootstrap)"_s);
        co_return;
    }
    const CommandResult load = co_await run(LaunchStep::load);
    if (load.isOk()) {
        print(u"✓ Launch Agent loaded successfully (using load)"_s);
        co_return;
    }
    print(u"✗ Failed to load Launch Agent (status: %1)"_s.arg(load.status.value_or(-1)));
    const CommandResult retry = co_await run(LaunchStep::loadForced);
    if (retry.isOk()) {
        print(u"✓ Launch Agent loaded on retry"_s);
    }
}

QCoro::Task<> LaunchAgent::verifyLaunchAgent() {
    const CommandResult listed = co_await run(LaunchStep::list);
    if (!listed.isOk()) {
        print(u"✗ Launch Agent verification failed - may not be running properly"_s);
        co_return;
    }
    print(u"✓ Verified: Launch Agent is running"_s);
    const bool isRunning = co_await isHelperRunning();
    if (isRunning) {
        print(u"✓ Verified: Helper script process is running"_s);
        co_return;
    }
    print(u"⚠️ Warning: Helper script process not found (may take a moment to start)"_s);
    co_await wait(milliseconds(2000));
    const bool isRunningNow = co_await isHelperRunning();
    print(isRunningNow ? u"✓ Helper script process is now running"_s
                       : u"✗ Helper script process still not running - Launch Agent may not be working"_s);
}

QCoro::Task<> LaunchAgent::uninstallLaunchAgent() {
    // Without its file there is no job, and the one of another home is none of ours.
    const bool isInstalled = co_await exists(m_job->path());
    if (isInstalled) {
        co_await run(LaunchStep::pkill);
        co_await wait(milliseconds(100));
    }
    print(u"✓ Killed helper script processes"_s);
    if (isInstalled) {
        co_await unloadJob();
        co_await removeJobFile();
    } else {
        print(u"No Launch Agent plist found (already removed)"_s);
    }
    bool isRunning = false;
    if (isInstalled) {
        co_await wait(milliseconds(300));
        co_await run(LaunchStep::pkill);
        isRunning = co_await isHelperRunning();
    }
    print(isRunning ? u"⚠️ Warning: Helper process may still be running"_s
                    : u"✓ Verified: All helper processes stopped"_s);
    if (isInstalled) {
        co_await wait(milliseconds(200));
    }
    const bool isLeft = co_await exists(m_job->path());
    print(isLeft ? u"✗ ERROR: Plist file still exists after uninstall at: "_s + m_job->path()
                 : u"✓ Verified: Plist file successfully removed"_s);
    print(u"Launch Agent uninstall completed"_s);
}

QCoro::Task<> LaunchAgent::unloadJob() {
    const CommandResult bootout = co_await run(LaunchStep::bootout);
    if (bootout.isOk()) {
        print(u"✓ Launch Agent bootout successful"_s);
    }
    co_await wait(milliseconds(300));
    co_await run(LaunchStep::unload);
    co_await wait(milliseconds(200));
    co_await run(LaunchStep::remove);
    print(u"✓ Launch Agent unloaded from launchctl"_s);
}

QCoro::Task<> LaunchAgent::removeJobFile() {
    const QString path = m_job->path();
    const QString failure = co_await removed(path);
    if (failure.isEmpty()) {
        print(u"✓ Launch Agent plist removed"_s);
    } else {
        print(u"✗ ERROR: Could not remove Launch Agent plist: "_s + failure);
        co_await wait(milliseconds(200));
        const QString failureAgain = co_await removed(path);
        print(failureAgain.isEmpty() ? u"✓ Plist removed on retry"_s
                                     : u"✗ ERROR: Failed to remove plist even on retry: "_s + failureAgain);
    }
    co_await wait(milliseconds(100));
    const bool isLeft = co_await exists(path);
    if (isLeft) {
        print(u"⚠️ WARNING: Plist still exists after removal attempt - trying again"_s);
        co_await wait(milliseconds(200));
        const QString lastFailure = co_await removed(path);
        print(lastFailure.isEmpty() ? u"✓ Plist removed on retry"_s
                                    : u"✗ ERROR: Failed to remove plist file even after retry"_s);
    }
}

QCoro::Task<bool> LaunchAgent::isHelperRunning() {
    const CommandResult found = co_await run(LaunchStep::pgrep);
    co_return found.isOk();
}

/// A step that this manager has no command for succeeds.
QCoro::Task<CommandResult> LaunchAgent::run(LaunchStep step) {
    const LaunchCommand command = m_job->command(step);
    if (command.program.isEmpty() || m_isHurried) {
        co_return CommandResult{.status = m_isHurried ? 1 : 0};
    }
    const CommandResult result = co_await m_commands.run(command.program, command.arguments);
    co_return result;
}

QCoro::Task<> LaunchAgent::wait(milliseconds span) {
    if (!m_isHurried) {
        co_await m_clock.sleep(span);
    }
}

void LaunchAgent::print(const QString& words) {
    if (!m_isHurried) { // what was not tried has no result
        m_log.print(u"[AppDelegate] "_s + words);
    }
}

} // namespace ostrelle
