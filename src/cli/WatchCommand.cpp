// SPDX-License-Identifier: GPL-3.0-or-later
#include "cli/WatchCommand.h"

#include "cli/CaptionProgram.h"
#include "cli/CommandLoop.h"
#include "cli/InterruptSignals.h"
#include "cli/ReportPrinter.h"
#include "pipeline/ProcessingTracker.h"
#include "transfer/AutoModeController.h"
#include "transfer/FolderThreads.h"
#include "transfer/LocalFolderScan.h"

#include <QCoroSignal>

namespace ostrelle {

using namespace Qt::StringLiterals;

namespace {

/// A folder is watched here, and no server.
class NoRemoteSource : public RemoteSource {
public:
    void start() override {}
    void stop() override {}
};

/// Auto mode on the folder of the command line.
class WatchRun : public QObject {
    Q_OBJECT

public:
    WatchRun(CaptionProgram& program, const InterruptSignals& interrupts)
        : m_program(program)
        , m_tracker(program.clock)
        , m_scan({.settings = program.settings,
                  .manifest = program.manifest,
                  .tracker = m_tracker,
                  .access = program.access,
                  .turns = program.turns,
                  .threads = m_threads,
                  .clock = program.clock,
                  .log = program.console,
                  .captioning = [&program](QString file) { return program.analyzer.captionInTurn(file); }})
        , m_controller({.settings = program.settings,
                        .status = program.status,
                        .defaults = program.defaults,
                        .scan = m_scan,
                        .remote = m_remote,
                        .notifications = program.notifications,
                        .threads = m_threads,
                        .clock = program.clock,
                        .log = program.console}) {
        connect(&program.analyzer, &Analyzer::imageFinished, this, &WatchRun::tell);
        connect(&interrupts, &InterruptSignals::interrupted, this, &WatchRun::ended);
        connect(&program.settings, &SettingsStore::autoModeChanged, this, &WatchRun::endWithoutAutoMode);
    }

    QCoro::Task<int> run() {
        m_program.errors.print(u"Watching %1. Ctrl-C ends it."_s.arg(*m_program.options.folder));
        m_controller.observeAutoModeSettings();
        co_await qCoro(this, &WatchRun::ended);
        co_await finishWork();
        const bool isTold = co_await m_program.finish();
        co_return isTold ? m_status : ExitStatus::fileFailed;
    }

Q_SIGNALS:
    void ended();

private:
    QCoro::Task<> finishWork() {
        m_program.turns.close();
        m_controller.updateAutoMode(false, SourceType::local, std::nullopt);
        if (m_program.status.isProcessing()) {
            m_program.errors.print(u"Finishing the images in the works. Ctrl-C again ends at once."_s);
        }
        co_await m_scan.finished();
    }

    void tell(const ImageReport& report) {
        m_program.output.print(m_program.options.json ? reportJson(report) : reportLine(report));
    }

    /// Something that auto mode needs has gone.
    void endWithoutAutoMode() {
        if (!m_program.settings.autoMode()) {
            m_program.errors.print(u"ostrelle-caption: "_s +
                                   m_program.status.lastMessage().value_or(u"Auto mode: Off"_s));
            m_status = ExitStatus::usageOrConfiguration;
            Q_EMIT ended();
        }
    }

    CaptionProgram& m_program;
    ProcessingTracker m_tracker;
    FolderThreads m_threads;
    NoRemoteSource m_remote;
    LocalFolderScan m_scan;
    AutoModeController m_controller;
    ExitStatus m_status = ExitStatus::success;
};

} // namespace

int runWatchCommand(const Options& options, const AppFolders& folders, const ServiceEndpoints& endpoints) {
    const InterruptSignals interrupts;
    CaptionProgram program(options, folders, endpoints);
    WatchRun run(program, interrupts);
    return runCommandLoop(program, [&run] { return run.run(); });
}

} // namespace ostrelle

#include "WatchCommand.moc"
