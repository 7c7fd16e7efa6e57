// SPDX-License-Identifier: GPL-3.0-or-later
#include "pipeline/CheckedFiles.h"

#include "core/Attempt.h"
#include "metadata/ImageMetadata.h"
#include "metadata/facts/ImageKind.h"
#include "pipeline/CaptionChecking.h"
#include "pipeline/CodeReplacementsReading.h"
#include "pipeline/FolderWork.h"

#include <QFileInfo>
#include <utility>

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

QCoro::Task<CheckedFile> checkFile(AnalyzerParts parts, QString path, RosterNames names) {
    auto look = [path] { return whyNoImage(path); };
    const QString obstacle = co_await onThreadOf(parts.threads, path, look);
    if (!obstacle.isEmpty()) {
        co_return {.file = path, .error = obstacle};
    }
    const QTimeZone zone = parts.clock.timeZone();
    auto read = [path, zone] { return factsOf(path, zone); };
    const auto facts = co_await attempt(onThreadOf(parts.threads, path, read));
    if (!facts) {
        co_return {.file = path, .error = facts.words()};
    }
    const QString caption = facts->caption.value_or(QString());
    const CheckedCaption checked = checkedCaption(caption, *facts, parts.settings.captionStyle(), zone);
    auto judge = [checked, names] { return checkCaption(checked, names); };
    co_return {.file = path, .caption = caption, .findings = co_await offMainThread(judge)};
}

void addRepeated(QList<CheckedFile>& files) {
    QStringList captions;
    for (const CheckedFile& file : std::as_const(files)) {
        captions.append(file.caption);
    }
    const QList<std::optional<Finding>> repeated = repeatedCaptions(captions);
    for (qsizetype index = 0; index < files.size(); ++index) {
        if (repeated.at(index)) {
            files[index].findings.append(*repeated.at(index));
        }
    }
}

} // namespace

QCoro::Task<CheckedFiles> checkFiles(AnalyzerParts parts, QStringList files,
                                     std::function<void(qsizetype)> onFile) {
    const RosterReading roster = co_await readRoster(parts.settings, parts.threads, parts.access, parts.log);
    const RosterNames names = rosterNames(roster.replacements);
    CheckedFiles checked{.files = {}, .hasRoster = !names.isEmpty()};
    for (qsizetype index = 0; index < files.size(); ++index) {
        onFile(index);
        checked.files.append(co_await checkFile(parts, files.at(index), names));
    }
    addRepeated(checked.files);
    co_return checked;
}

} // namespace ostrelle
