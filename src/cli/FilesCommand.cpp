// SPDX-License-Identifier: GPL-3.0-or-later
#include "cli/FilesCommand.h"

#include "cli/CommandLoop.h"
#include "cli/CommandProgram.h"
#include "cli/ProgressBar.h"
#include "cli/ReportPrinter.h"
#include "core/Attempt.h"
#include "pipeline/FolderTidying.h"
#include "pipeline/FolderWork.h"
#include "platform/InterruptSignals.h"

#include <QCoroTask>
#include <QDateTime>
#include <QFileInfo>

namespace ostrelle {

using namespace Qt::StringLiterals;

namespace {

/// Empty for a file.
QString whyNoImage(const QString& path) {
    const QFileInfo file(path);
    if (file.isDir()) {
        return u"It is a folder, not an image. Caption its images with: --folder"_s;
    }
    return file.isFile() ? QString() : u"There is no such file."_s;
}

/// Captions the files of a command line one after the other.
class FilesRun : public QObject {
public:
    FilesRun(CommandProgram& program, const InterruptSignals& interrupts) : m_program(program) {
        connect(&interrupts, &InterruptSignals::interrupted, this, &FilesRun::stop);
        connect(&m_program.captions.analyzer, &Analyzer::imageFinished, this, &FilesRun::print);
    }

    QCoro::Task<int> run() {
        const bool isRetry = m_program.options.isRetry;
        const QStringList files = isRetry ? m_program.lastFailed() : m_program.options.files;
        if (files.isEmpty()) {
            m_program.errors.print(u"No image failed in the last run."_s);
        }
        co_await tidyFoldersOf(m_program.captions.threads, files);
        const Overtaking::Mark mark = m_program.captions.turns.stopMark();
        qsizetype index = 0;
        for (; index < files.size() && !mark.isOvertaken(); ++index) {
            m_bar.show(index, files.size(), QFileInfo(files[index]).fileName());
            m_program.captions.progress.expectImage(index + 1, files.size());
            co_await take(files[index]);
        }
        m_bar.clear();
        if (index < files.size()) {
            m_hasFailure = true;
            m_program.errors.print(u"Interrupted. Not begun: %1."_s.arg(files.size() - index));
        }
        const bool isTold = co_await m_program.finish();
        co_return isTold && !m_hasFailure ? ExitStatus::success : ExitStatus::fileFailed;
    }

private:
    void stop() {
        m_bar.clear();
        m_program.errors.print(u"Finishing the image in the works. Ctrl-C again ends at once."_s);
        m_program.captions.turns.stop();
    }

    QCoro::Task<> take(QString path) {
        auto look = [path] { return whyNoImage(path); };
        const QString obstacle = co_await onThreadOf(m_program.captions.threads, path, look);
        if (!obstacle.isEmpty()) {
            ImageOutcome image;
            image.file = path;
            image.kind = OutcomeKind::refused;
            image.reason = obstacle;
            print(image);
        } else if (m_program.options.command == Options::Command::showPrompt) {
            co_await showPrompt(path);
        } else if (co_await m_program.captions.analyzer.analyzeSingle(path, m_begun)) {
            co_await m_program.captions.manifest.markProcessed(path);
        }
    }

    QCoro::Task<> showPrompt(QString file) {
        const auto prompt = co_await attempt(m_program.captions.analyzer.promptFor(file));
        m_bar.clear();
        if (prompt) {
            m_program.output.print(*prompt);
        } else {
            m_hasFailure = true;
            m_program.errors.print(u"ostrelle-caption: %1: %2"_s.arg(file, prompt.words()));
        }
    }

    void print(const ImageOutcome& image) {
        m_hasFailure = m_hasFailure || isFailure(image.kind);
        m_bar.clear();
        for (const QString& warning : m_program.options.json ? image.warnings : QStringList()) {
            m_program.warn(warning); // the text shows it with the image
        }
        m_program.output.print(m_program.options.json ? reportJson(image) : reportText(image));
    }

    CommandProgram& m_program;
    const QDateTime m_begun = m_program.captions.clock.now();
    ProgressBar m_bar{stderr, !m_program.options.verbose}; // log lines show the same
    bool m_hasFailure = false;
};

} // namespace

int runFilesCommand(const Options& options, const AppFolders& folders, const ServiceEndpoints& endpoints) {
    CommandProgram program(options, folders, endpoints);
    const InterruptSignals interrupts;
    FilesRun run(program, interrupts);
    return runCommandLoop(program, [&run] { return run.run(); });
}

} // namespace ostrelle
