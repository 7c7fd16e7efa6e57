// SPDX-License-Identifier: GPL-3.0-or-later
#include "cli/WatchCommand.h"

#include "cli/CommandLoop.h"
#include "cli/CommandProgram.h"
#include "cli/FetchReport.h"
#include "cli/ReportPrinter.h"
#include "core/Event.h"
#include "platform/InterruptSignals.h"

#include <QCoroTask>
#include <QSet>

namespace ostrelle {

using namespace Qt::StringLiterals;

namespace {

/// Auto mode on the folder given on the command line.
class WatchRun : public QObject {
public:
    WatchRun(CommandProgram& program, const InterruptSignals& interrupts) : m_program(program) {
        connect(&program.captions.analyzer, &Analyzer::imageFinished, this, &WatchRun::print);
        connect(&interrupts, &InterruptSignals::interrupted, this, &WatchRun::interrupt);
        connect(&program.captions.manifest, &ProcessedFilesManifest::savingFailureChanged, this,
                [&program] { program.warnOfManifest(); });
        connect(&program.captions.settings, &SettingsStore::autoModeChanged, this,
                &WatchRun::endWithoutAutoMode);
    }

    QCoro::Task<int> run() {
        const Options& options = m_program.options;
        if (!options.server.isEmpty()) {
            const bool hasPassword = co_await m_program.findPassword();
            if (!hasPassword) {
                co_return ExitStatus::usageOrConfiguration;
            }
        }
        if (options.command == Options::Command::downloadServer) {
            m_program.captions.server.downloadAll();
            endAfterDownload(m_program.captions.server, m_over);
        } else {
            m_program.errors.print(u"Watching %1. Ctrl-C ends it."_s.arg(
                options.folder.value_or(options.server.toDisplayString())));
            m_program.captions.autoMode.observeAutoModeSettings();
        }
        co_await m_over.happened();
        if (m_program.captions.status.isProcessing()) {
            m_program.errors.print(u"Finishing the images in the works. Ctrl-C again ends at once."_s);
        }
        const bool isTold = co_await m_program.finish();
        m_fetches.clearBar();
        const bool isWell = isTold && m_failed.isEmpty() && m_fetches.isComplete();
        co_return isWell || m_status != ExitStatus::success ? m_status : ExitStatus::fileFailed;
    }

private:
    void print(const ImageOutcome& image) {
        m_fetches.clearBar();
        for (const QString& warning : image.warnings) {
            m_program.warn(warning);
        }
        if (isFailure(image.kind)) {
            m_failed.insert(image.file);
        } else {
            m_failed.remove(image.file); // a later attempt succeeded
        }
        m_program.output.print(m_program.options.json ? reportJson(image) : reportLine(image));
    }

    void interrupt() {
        if (m_program.options.command == Options::Command::downloadServer) {
            m_status = ExitStatus::fileFailed; // not all has come
        }
        m_over.happen();
    }

    static QCoro::Task<> endAfterDownload(ServerSource& server, Event over) {
        co_await server.finished();
        over.happen();
    }

    /// Something that auto mode needs has gone away.
    void endWithoutAutoMode() {
        if (!m_program.captions.settings.autoMode()) {
            m_program.errors.print(u"ostrelle-caption: "_s +
                                   m_program.captions.status.lastMessage().value_or(u"Auto mode: Off"_s));
            m_status = ExitStatus::usageOrConfiguration;
            m_over.happen();
        }
    }

    CommandProgram& m_program;
    FetchReport m_fetches{m_program};
    Event m_over;
    ExitStatus m_status = ExitStatus::success;
    QSet<QString> m_failed; ///< files whose last attempt failed
};

} // namespace

int runWatchCommand(const Options& options, const AppFolders& folders, const ServiceEndpoints& endpoints) {
    const InterruptSignals interrupts;
    CommandProgram program(options, folders, endpoints);
    WatchRun run(program, interrupts);
    return runCommandLoop(program, [&run] { return run.run(); });
}

} // namespace ostrelle
