// SPDX-License-Identifier: GPL-3.0-or-later
#include "app/DesktopProgram.h"

#include <QApplication>
#include <QDialog>
#include <QDir>
#include <QFileInfo>
#include <QStandardPaths>
#include <QSystemTrayIcon>
#include <utility>

namespace ostrelle {

using namespace Qt::StringLiterals;

namespace {

/// In the folder of the program where it was built, and where it is installed.
LaunchPaths launchPaths() {
    const QString folder = QCoreApplication::applicationDirPath();
    const QString name = u"/OstrelleCaptionsHelper.sh"_s;
    const QString installed =
        QDir::cleanPath(folder + u"/" OSTRELLE_LIBEXEC_FROM_BIN "/ostrelle-captions"_s) + name;
    return {.helper = QFileInfo::exists(folder + name) ? folder + name : installed,
            .program = QCoreApplication::applicationFilePath(),
            .config = QStandardPaths::writableLocation(QStandardPaths::GenericConfigLocation)};
}

} // namespace

DesktopProgram::DesktopProgram(const AppFolders& folders, const ServiceEndpoints& endpoints,
                               std::function<void()> ending)
    : m_defaults(folders.defaultsFile(), m_errors)
    , m_captions({.folders = folders,
                  .endpoints = endpoints,
                  .defaults = m_defaults,
                  .settingsDefaults = m_defaults,
                  .secrets = m_secrets,
                  .notificationCenter = m_notificationCenter,
                  .alerts = m_alerts,
                  .events = m_events,
                  .makeStream = [this](const FtpAddress& address) { return m_streams.make(address); },
                  .access = m_access,
                  .clock = m_clock,
                  .console = m_console,
                  .errors = m_errors})
    , m_updates({.url = endpoints.updates,
                 .publicKey = endpoints.updatesKey,
                 .current = QVersionNumber::fromString(QStringLiteral(OSTRELLE_VERSION))},
                m_defaults, m_clock, m_console)
    , m_delegate(shellParts(), m_captions.autoMode, [this] { quit(); })
    , m_ending(std::move(ending)) {
    QObject::connect(&m_notificationCenter, &DesktopNotificationCenter::clicked, &m_delegate,
                     [this](const QByteArray& token) {
                         m_delegate.applicationShouldHandleReopen({.activationToken = token});
                     });
    QObject::connect(&m_sessionEnd, &SessionEnd::ending, &m_delegate, [this] { endWithSession(); });
    m_tasks.spawn(forgetOld(*this));
}

ShellParts DesktopProgram::shellParts() {
    return {.settings = m_captions.settings,
            .status = m_captions.status,
            .usage = m_captions.usage,
            .analytics = m_captions.analytics,
            .history = m_captions.history,
            .defaults = m_defaults,
            .prompts = m_captions.prompts,
            .keyCheck = m_captions.keyCheck,
            .updates = m_updates,
            .analyzer = m_captions.analyzer,
            .failures = m_captions.failures,
            .log = m_captions.log,
            .turns = m_captions.turns,
            .notifications = m_captions.notifications,
            .threads = m_captions.threads,
            .access = m_captions.access,
            .files = m_files,
            .alerts = m_alerts,
            .events = m_events,
            .workspace = m_workspace,
            .commands = m_commands,
            .clock = m_captions.clock,
            .console = m_console,
            .connectionTest = [this] { return m_captions.server.testConnection(); },
            .pages = WebPages::builtIn(),
            .launch = launchPaths(),
            .hasTray = &QSystemTrayIcon::isSystemTrayAvailable};
}

QCoro::Task<> DesktopProgram::forgetOld(DesktopProgram& program) {
    const QDateTime oldest = program.m_clock.now().addDays(-Journal::usualAge.count());
    co_await program.m_captions.forget(oldest);
}

void DesktopProgram::endWithSession() {
    m_isSessionEnding = true;
    if (!m_isQuitting) {
        quit();
    }
}

void DesktopProgram::quit() {
    if (m_isQuitting) {
        if (!m_isSessionEnding) { // else a signal that comes with it
            QCoreApplication::exit();
        }
        return;
    }
    m_isQuitting = true;
    m_ending();
    m_delegate.applicationWillTerminate();
    const QWidgetList windows = QApplication::topLevelWidgets();
    for (QWidget* window : windows) {
        if (auto* dialog = qobject_cast<QDialog*>(window)) {
            dialog->reject(); // answers the task that awaits it
        } else {
            window->hide();
        }
    }
    finish(*this);
}

QCoro::Task<> DesktopProgram::finish(DesktopProgram& program) {
    co_await program.m_tasks.finished();
    co_await program.m_captions.finishWork();
    co_await program.m_delegate.finished();
    co_await program.m_defaults.finished(); // which these may have changed
    QCoreApplication::exit();
}

} // namespace ostrelle
