// SPDX-License-Identifier: GPL-3.0-or-later
#include "cli/FolderCommand.h"

#include "cli/CommandLoop.h"
#include "cli/CommandProgram.h"
#include "cli/ProgressBar.h"
#include "cli/ReportPrinter.h"
#include "platform/InterruptSignals.h"

#include <QCoroTask>

namespace ostrelle {

using namespace Qt::StringLiterals;

namespace {

/// A run over a folder, with a bar that shows batch and image.
class FolderCommandRun : public QObject {
public:
    FolderCommandRun(CommandProgram& program, const InterruptSignals& interrupts) : m_program(program) {
        connect(&interrupts, &InterruptSignals::interrupted, this, &FolderCommandRun::stop);
        connect(&m_program.captions.analyzer, &Analyzer::imageFinished, this, &FolderCommandRun::print);
        connect(&m_program.captions.status, &StatusStore::lastMessageChanged, this,
                &FolderCommandRun::showProgress);
    }

    QCoro::Task<int> run() {
        const RunTally tally = co_await m_program.captions.analyzer.recaptionFolder(m_program.options.images);
        m_bar.clear();
        m_program.errors.print(m_program.captions.status.lastMessage().value_or(QString()));
        const bool isTold = co_await m_program.finish();
        const bool isWell = isTold && tally.ending == RunTally::Ending::completed && tally.failed() == 0;
        co_return isWell ? ExitStatus::success : ExitStatus::fileFailed;
    }

private:
    void stop() {
        m_bar.clear();
        m_program.errors.print(u"Finishing the images in the works. Ctrl-C again ends at once."_s);
        m_program.captions.turns.stop();
    }

    void print(const ImageOutcome& image) {
        m_bar.clear();
        for (const QString& warning : image.warnings) {
            m_program.warn(warning);
        }
        m_program.output.print(m_program.options.json ? reportJson(image) : reportLine(image));
    }

    void showProgress() {
        const StatusStore& status = m_program.captions.status;
        const QString batch =
            u"batch %1/%2  "_s.arg(status.currentBatchNumber()).arg(status.totalBatchCount());
        m_bar.show(status.processed() + status.failed(), status.totalFiles(),
                   batch + status.lastMessage().value_or(QString()));
    }

    CommandProgram& m_program;
    ProgressBar m_bar{stderr, !m_program.options.verbose}; // log lines show the same
};

} // namespace

int runFolderCommand(const Options& options, const AppFolders& folders, const ServiceEndpoints& endpoints) {
    CommandProgram program(options, folders, endpoints);
    const InterruptSignals interrupts;
    FolderCommandRun run(program, interrupts);
    return runCommandLoop(program, [&run] { return run.run(); });
}

} // namespace ostrelle
