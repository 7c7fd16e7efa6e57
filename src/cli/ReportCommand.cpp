// SPDX-License-Identifier: GPL-3.0-or-later
#include "cli/ReportCommand.h"

#include "cli/CheckReport.h"
#include "cli/CommandLoop.h"
#include "cli/CommandProgram.h"
#include "cli/ProgressBar.h"
#include "core/Attempt.h"
#include "core/Text.h"
#include "metadata/rendition/RAWPreviewExtractor.h"
#include "pipeline/ContactSheet.h"
#include "pipeline/FolderWork.h"
#include "pipeline/ImageListing.h"
#include "platform/Files.h"

#include <QCoroTask>
#include <QDir>
#include <QFileInfo>
#include <QRegularExpression>

namespace ostrelle {

using namespace Qt::StringLiterals;

namespace {

/// So that 600 pictures make a page of less than 40 MB.
constexpr double pictureSize = 480;
constexpr double pictureQuality = 0.6;

class ReportRun {
public:
    explicit ReportRun(CommandProgram& program) : m_program(program) {}

    QCoro::Task<int> run() {
        const auto done = co_await attempt(report());
        m_bar.clear();
        if (!done) {
            m_program.errors.print(u"ostrelle-caption: "_s + done.words());
        }
        const bool isTold = co_await m_program.finish();
        co_return isTold&& done.valueOr(false) ? ExitStatus::success : ExitStatus::fileFailed;
    }

private:
    QCoro::Task<bool> report() {
        const QStringList files = co_await chosenFiles();
        if (files.isEmpty()) {
            m_program.errors.print(u"There are no images for a contact sheet."_s);
            co_return false;
        }
        const auto show = [this, files](qsizetype index) { showProgress(files, index); };
        const CheckedFiles checked = co_await checkFiles(m_program.captions.analyzerParts(), files, show);
        if (!checked.hasRoster) {
            m_program.warn(withoutRosterWords());
        }
        QList<SheetPicture> pictures;
        for (const CheckedFile& file : checked.files) {
            showProgress(files, pictures.size());
            pictures.append(co_await withPicture(file));
        }
        const QString page = m_program.options.html;
        const QString title = titleOf();
        auto write = [page, title, pictures] { replaceFile(page, contactSheet(title, pictures)); };
        co_await onThreadOf(m_program.captions.threads, page, write);
        m_bar.clear();
        m_program.output.print(
            u"%1: %2 picture%3"_s.arg(page, QString::number(pictures.size()), plural(pictures.size())));
        co_return true;
    }

    QCoro::Task<QStringList> chosenFiles() {
        const Options& options = m_program.options;
        QList<JournalEntry> entries;
        if (options.isLastRun) {
            entries = co_await m_program.captions.journal.newestRun();
        } else if (options.day.isValid()) {
            entries = co_await m_program.captions.journal.between(options.day.startOfDay(),
                                                                  options.day.addDays(1).startOfDay());
        } else if (options.folder) {
            const QString folder = *options.folder;
            auto list = [folder] { return listImages(folder).images; };
            QStringList names = co_await onThreadOf(m_program.captions.threads, folder + u"/."_s, list);
            names.sort();
            co_return names.replaceInStrings(QRegularExpression(u"^"_s), folder + u'/');
        } else {
            co_return options.files;
        }
        QStringList files;
        for (const JournalEntry& entry : entries) {
            files.append(entry.file);
        }
        files.removeDuplicates();
        co_return files;
    }

    QCoro::Task<SheetPicture> withPicture(CheckedFile file) {
        if (!file.error.isEmpty()) {
            co_return {.checked = file, .note = u"No picture"_s};
        }
        const QString path = file.file;
        auto render = [path] {
            return RAWPreviewExtractor()
                .extractPreview(path, pictureSize, pictureQuality, Orientation::upright)
                .jpeg;
        };
        const auto jpeg = co_await attempt(onThreadOf(m_program.captions.threads, path, render));
        co_return {.checked = file, .jpeg = jpeg.valueOr({}), .note = jpeg ? QString() : jpeg.words()};
    }

    QString titleOf() const {
        const Options& options = m_program.options;
        if (options.folder) {
            return u"Captions in %1"_s.arg(QFileInfo(QDir(*options.folder).absolutePath()).fileName());
        }
        return options.day.isValid() ? u"Captions of %1"_s.arg(options.day.toString(Qt::ISODate))
               : options.isLastRun   ? u"Captions of the last run"_s
                                     : u"Captions"_s;
    }

    void showProgress(const QStringList& files, qsizetype index) {
        m_bar.show(index, files.size(), QFileInfo(files.at(index)).fileName());
    }

    CommandProgram& m_program;
    ProgressBar m_bar{stderr, !m_program.options.verbose};
};

} // namespace

int runReportCommand(const Options& options, const AppFolders& folders, const ServiceEndpoints& endpoints) {
    CommandProgram program(options, folders, endpoints);
    ReportRun run(program);
    return runCommandLoop(program, [&run] { return run.run(); });
}

} // namespace ostrelle
