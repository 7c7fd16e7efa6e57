// SPDX-License-Identifier: GPL-3.0-or-later
#include "cli/CheckCommand.h"

#include "cli/CheckReport.h"
#include "cli/CommandLoop.h"
#include "cli/CommandProgram.h"
#include "cli/ProgressBar.h"
#include "core/Attempt.h"
#include "metadata/ImageMetadata.h"
#include "metadata/facts/ImageKind.h"
#include "pipeline/CaptionChecking.h"
#include "pipeline/CodeReplacementsReading.h"
#include "pipeline/FolderWork.h"

#include <QCoroTask>
#include <QFileInfo>
#include <algorithm>

#include "checks/CaptionCheck.h"

namespace ostrelle {

using namespace Qt::StringLiterals;

namespace {

/// A RAW image without a sidecar has no caption and no facts. Throws what ImageMetadata throws.
ImageFacts factsOf(const QString& file, const QTimeZone& zone) {
    const ImageMetadata metadata(file);
    return metadata.lacksSidecar() ? ImageFacts() : metadata.read(zone).facts;
}

/// Empty for an image.
QString whyNoImage(const QString& path) {
    const QFileInfo file(path);
    if (!file.exists()) {
        return u"There is no such file."_s;
    }
    return file.isFile() && isSupportedImage(path) ? QString() : u"It is not an image."_s;
}

class CheckRun {
public:
    explicit CheckRun(CommandProgram& program) : m_program(program) {}

    QCoro::Task<int> run() {
        CaptionProgram& captions = m_program.captions;
        const RosterReading roster =
            co_await readRoster(captions.settings, captions.threads, captions.access, captions.log);
        const RosterNames names = rosterNames(roster.replacements);
        if (names.isEmpty()) {
            m_program.warn(u"There is no roster to use, so names and numbers are not checked. Name one with: "
                           "--roster FILE"_s);
        }
        const QStringList& files = m_program.options.files;
        for (const QString& file : files) {
            m_bar.show(m_checked.size(), files.size(), QFileInfo(file).fileName());
            co_await check(file, names);
        }
        m_bar.clear();
        addRepeated();
        const bool isClean = print();
        const bool isTold = co_await m_program.finish();
        co_return isTold&& isClean ? ExitStatus::success : ExitStatus::fileFailed;
    }

private:
    QCoro::Task<> check(QString path, RosterNames names) {
        m_checked.append({.file = path, .caption = {}, .error = {}, .findings = {}});
        auto look = [path] { return whyNoImage(path); };
        const QString obstacle = co_await onThreadOf(m_program.captions.threads, path, look);
        if (!obstacle.isEmpty()) {
            m_checked.last().error = obstacle;
            co_return;
        }
        const QTimeZone zone = m_program.captions.clock.timeZone();
        auto read = [path, zone] { return factsOf(path, zone); };
        const auto facts = co_await attempt(onThreadOf(m_program.captions.threads, path, read));
        if (!facts) {
            m_checked.last().error = facts.words();
            co_return;
        }
        const QString caption = facts->caption.value_or(QString());
        const CaptionStyle style = m_program.captions.settings.captionStyle();
        m_checked.last().caption = caption;
        m_checked.last().findings = checkCaption(checkedCaption(caption, *facts, style, zone), names);
    }

    void addRepeated() {
        QStringList captions;
        for (const CheckedFile& file : std::as_const(m_checked)) {
            captions.append(file.caption);
        }
        const QList<std::optional<Finding>> repeated = repeatedCaptions(captions);
        for (qsizetype index = 0; index < m_checked.size(); ++index) {
            if (repeated.at(index)) {
                m_checked[index].findings.append(*repeated.at(index));
            }
        }
    }

    /// False if something was found, or a file could not be read.
    bool print() {
        for (const CheckedFile& file : std::as_const(m_checked)) {
            m_program.output.print(m_program.options.json ? checkJson(file) : checkText(file));
        }
        return std::all_of(m_checked.begin(), m_checked.end(), [](const CheckedFile& file) {
            return file.error.isEmpty() && file.findings.isEmpty();
        });
    }

    CommandProgram& m_program;
    ProgressBar m_bar{stderr, !m_program.options.verbose};
    QList<CheckedFile> m_checked;
};

} // namespace

int runCheckCommand(const Options& options, const AppFolders& folders, const ServiceEndpoints& endpoints) {
    CommandProgram program(options, folders, endpoints);
    CheckRun run(program);
    return runCommandLoop(program, [&run] { return run.run(); });
}

} // namespace ostrelle
