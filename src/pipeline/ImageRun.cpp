// SPDX-License-Identifier: GPL-3.0-or-later
#include "pipeline/ImageRun.h"

#include "core/Attempt.h"
#include "core/Text.h"
#include "metadata/facts/OvertakenError.h"
#include "metadata/xml/XmlDocument.h"
#include "pipeline/AnalyzerError.h"
#include "pipeline/CaptionAcceptance.h"
#include "pipeline/CaptionWriting.h"
#include "pipeline/FolderWork.h"
#include "pipeline/PromptComposition.h"
#include "platform/Files.h"

#include <QFileInfo>
#include <QStringDecoder>
#include <algorithm>

#include "product/ApiKey.h"

namespace ostrelle {

using namespace Qt::StringLiterals;

namespace {

/// The beginning of a sidecar as a log line of its own kind.
QString sidecarDump(const QString& sidecar, const QString& name) {
    constexpr qsizetype shownCharacters = 2000;
    const QByteArray bytes = readFile(sidecar, XmlDocument::maximumSize);
    QStringDecoder decoder(QStringConverter::Utf8, QStringConverter::Flag::Stateless);
    QString text = decoder.decode(bytes);
    if (decoder.hasError()) {
        text = u"<non-UTF8 XMP>"_s;
    }
    // Counting characters looks at the whole text, and a sidecar can be very long.
    const QStringView beginning = QStringView(text).first(std::min<qsizetype>(text.size(), 64 * 1024));
    const QString shown = firstCharacters(beginning, shownCharacters);
    return u"[Analyzer] XMP dump for %1 — size: %2 bytes; first %3 chars:\n%4"_s.arg(
        name, QString::number(bytes.size()), QString::number(characterCount(shown)), shown);
}

/// What the log says around a write, for each place that a caption is written to.
struct WriteLines {
    QString before;
    QString after;
    QString failed; ///< of the image's name and the error
    QString mismatch;
    QString done; ///< of the image's name
};

const WriteLines sidecarWrite = {
    .before = u"[Analyzer] XMP before write (x-default): "_s,
    .after = u"[Analyzer] XMP after write (x-default): "_s,
    .failed = u"[Analyzer] Failed to write XMP for %1: %2"_s,
    .mismatch =
        u"[Analyzer] Mismatch after write. The sidecar did not reflect the intended caption. We may need to "
        "adjust XMPWriter to target the correct dc:description or language variants."_s,
    .done = u"[Analyzer] Wrote caption to XMP and touched mtime for %1."_s,
};

const WriteLines embeddedWrite = {
    .before = u"[Analyzer] JPEG metadata before write: "_s,
    .after = u"[Analyzer] JPEG metadata after write: "_s,
    .failed = u"[Analyzer] Failed to write caption to JPEG for %1: %2"_s,
    .mismatch = u"[Analyzer] Warning: Caption mismatch after writing to JPEG."_s,
    .done = u"[Analyzer] Successfully wrote caption to JPEG embedded metadata for %1."_s,
};

} // namespace

ImageRun::ImageRun(AnalyzerParts parts, ImageRequest request)
    : m_parts(parts), m_gathering(parts, request.file), m_request(std::move(request)) {
    m_report.file = m_request.file;
}

QCoro::Task<std::optional<QString>> ImageRun::peekCaption() {
    co_await m_gathering.open();
    co_return m_gathering.isRead() ? m_gathering.facts().caption : std::nullopt;
}

QCoro::Task<> ImageRun::execute() {
    requireKey();
    co_await m_gathering.ensureSidecar();
    co_await m_gathering.readCaption();
    m_report.captionBefore = m_gathering.caption();
    requireUnchanged();
    if (m_gathering.isFinished()) {
        m_report.outcome = ImageReport::Outcome::skipped;
        m_report.reason = u"It already has a caption."_s;
        co_return;
    }
    m_gathering.sayContext();
    co_await dumpSidecar();
    m_gathering.sayRights();
    co_await requireEditable();
    const RosterReading roster = co_await readRoster(m_parts);
    m_report.warnings = roster.warnings;
    co_await m_gathering.extractPreview();
    co_await savePreview();
    co_await m_gathering.gatherAudioNote();
    const QString prompt = co_await composeImagePrompt(m_parts, m_gathering.image(), roster.replacements);
    logRequest(prompt, roster.replacements);
    const QString reply = co_await askModel(prompt);
    co_await acceptCaption(reply);
}

QCoro::Task<QString> ImageRun::composePrompt() {
    co_await m_gathering.open(); // an image that has no sidecar yet has no facts
    if (!m_gathering.isSidecarMissing()) {
        m_gathering.takeCaption();
        m_gathering.sayContext();
        m_gathering.sayRights();
    }
    const RosterReading roster = co_await readRoster(m_parts);
    co_return co_await composeImagePrompt(m_parts, m_gathering.image(), roster.replacements);
}

/// Since the scan. A JPEG that is another file may have another picture or another caption: the next scan
/// tells.
void ImageRun::requireUnchanged() const {
    if (m_request.image && m_gathering.imageStamp() != m_request.image) {
        throw OvertakenError(OvertakenError::Case::pictureReplaced);
    }
    if (m_request.facts) {
        requireSameFacts(m_gathering.facts(), *m_request.facts);
    }
}

QCoro::Task<> ImageRun::requireEditable() {
    const auto editable = co_await attempt(m_gathering.requireEditable());
    if (!editable) {
        m_isUnwritable = true;
        editable.rethrow();
    }
}

void ImageRun::requireKey() const {
    if (apiKey(m_parts.defaults).isEmpty()) {
        throw AnalyzerError(AnalyzerError::missingKey,
                            u"Please enter your OpenAI API key in Settings to continue captioning images."_s);
    }
}

/// For diagnosis only, also of a sidecar that lies beside a JPEG and is not used.
QCoro::Task<> ImageRun::dumpSidecar() {
    const QString name = m_gathering.name();
    auto dump = [metadata = m_gathering.metadata(), name] {
        const QString sidecar = metadata.sidecar();
        if (QFileInfo::exists(sidecar)) {
            return sidecarDump(sidecar, name);
        }
        return metadata.isEmbedded()
                   ? u"[Analyzer] JPEG file %1 has no XMP sidecar (will use embedded metadata)"_s.arg(name)
                   : QString();
    };
    const auto text = co_await attempt(onThreadOf(m_parts.threads, m_report.file, dump));
    const QString line = text ? *text : u"[Analyzer] Failed to dump XMP for %1: %2"_s.arg(name, text.words());
    if (!line.isEmpty()) {
        m_parts.log.printAndAppend(line);
    }
}

/// A copy to look at later; the run goes on without it.
QCoro::Task<> ImageRun::savePreview() {
    auto save = [previews = m_parts.previews, jpeg = m_gathering.image().jpegData(), file = m_report.file] {
        previews.save(jpeg, file);
        return previews.path(file);
    };
    const auto path = co_await attemptOffMainThread(save);
    if (path) {
        m_report.previewPath = *path;
        m_parts.log.print(u"[Analyzer] Saved preview to: "_s + *path);
    }
}

void ImageRun::logRequest(const QString& prompt, const CodeReplacements& roster) {
    constexpr qsizetype headCharacters = 1200;
    constexpr qsizetype tailCharacters = 500;
    AnalyzerLog& log = m_parts.log;
    const PreparedImage& image = m_gathering.image();
    const std::optional<QString>& creator = m_gathering.facts().creator;
    log.appendToLog(contextIsEmpty(image.context())
                        ? u"[Analyzer] Context present: NO"_s
                        : u"[Analyzer] Context present: YES — "_s + contextDescription(image.context()));
    for (const QString& line : logLines(roster)) {
        log.appendToLog(line);
    }
    log.appendToLog(creator ? u"[Analyzer] XMP creator present: YES — "_s + *creator
                            : u"[Analyzer] XMP creator present: NO"_s);
    if (const std::optional<QString>& rights = image.rights()) {
        log.appendToLog(u"[Analyzer] XMP rights present: YES"_s);
        log.appendToLog(u"[Analyzer] XMP rights FULL VALUE: \"%1\""_s.arg(*rights));
        log.printAndAppend(u"[Analyzer] XMP rights will appear in Context as: Rights: "_s + *rights);
    } else {
        log.appendToLog(u"[Analyzer] XMP rights present: NO"_s);
    }
    log.appendToLog(u"[Analyzer] FULL PROMPT LENGTH: %1 characters"_s.arg(characterCount(prompt)));
    const QString head = firstCharacters(prompt, headCharacters);
    log.appendToLog(
        u"[Analyzer] Prompt head (first %1 chars):\n%2"_s.arg(QString::number(characterCount(head)), head));
    const QString tail = lastCharacters(prompt, tailCharacters);
    log.print(u"[Analyzer] Prompt tail (last 500 chars) showing Rights instruction:\n"_s + tail);
    log.appendToLog(u"[Analyzer] Prompt tail (last 500 chars):\n"_s + tail);
}

QCoro::Task<QString> ImageRun::askModel(QString prompt) {
    const auto reply = co_await attempt(askForCaption(m_parts, m_gathering.image().jpegData(), prompt));
    if (!reply) {
        m_parts.log.printAndAppend(
            u"[Analyzer] OpenAI generateCaption failed for %1: %2"_s.arg(m_gathering.name(), reply.words()));
        reply.rethrow();
    }
    if (reply->usage) {
        m_report.cost = UsageTracker::costOf(reply->usage->promptTokens, reply->usage->completionTokens);
    }
    m_isAnswered = true;
    co_return reply->text;
}

QCoro::Task<> ImageRun::acceptCaption(QString reply) {
    const QString caption = firstNonEmptyLine(reply);
    if (isSameText(caption, m_gathering.image().defaultCaption)) {
        if (!hasPlaceholder(caption)) {
            m_parts.log.printAndAppend(
                u"[Analyzer] Model returned default caption unchanged for %1; leaving XMP as-is."_s.arg(
                    m_gathering.name()));
            m_report.outcome = ImageReport::Outcome::skipped;
            m_report.reason = u"The model returned the existing caption unchanged."_s;
            co_return;
        }
        m_parts.log.printAndAppend(
            u"[Analyzer] WARNING: Model returned caption with placeholders unchanged for %1. "
            "Caption may need manual editing."_s.arg(m_gathering.name()));
    }
    co_await writeAndCheck(caption);
    m_report.outcome = ImageReport::Outcome::captioned;
    m_report.captionAfter = caption;
}

QCoro::Task<> ImageRun::writeAndCheck(QString caption) {
    AnalyzerLog& log = m_parts.log;
    log.appendToLog(u"[Analyzer] About to write caption (%1 bytes) for %2: \"%3\""_s.arg(
        QString::number(caption.toUtf8().size()), m_gathering.name(), caption));
    const ScopedAccess fileAccess(m_parts.access, m_report.file);
    const ScopedAccess folderAccess(m_parts.access, QFileInfo(m_report.file).path());
    const auto words = [](bool isGranted) { return isGranted ? u"true"_s : u"false"_s; };
    log.appendToLog(fileAccess.isGranted() || folderAccess.isGranted()
                        ? u"[Analyzer] Security-scoped access: file=%1, folder=%2"_s.arg(
                              words(fileAccess.isGranted()), words(folderAccess.isGranted()))
                        : u"[Analyzer] WARNING: No security-scoped access granted for write operation"_s);
    const WriteLines& lines = m_gathering.metadata().isEmbedded() ? embeddedWrite : sidecarWrite;
    const std::optional<QString>& before = m_gathering.facts().caption; // which the write looks at again
    log.appendToLog(lines.before + (before ? before->trimmed() : u"<nil>"_s));
    const auto written = co_await attempt(writeCaption(m_parts, m_gathering.image(), caption));
    if (!written && !written.failureAs<OvertakenError>()) {
        log.printAndAppend(lines.failed.arg(m_gathering.name(), written.words()));
        m_isUnwritable = true; // another attempt would be paid for, and end likewise
    }
    if (!written) {
        written.rethrow();
    }
    m_imageStamp = *written;
    const QString after = co_await captionForLog();
    log.appendToLog(lines.after + after);
    log.appendToLog(isSameText(after, caption) ? lines.done.arg(m_gathering.name()) : lines.mismatch);
}

QCoro::Task<QString> ImageRun::captionForLog() {
    auto read = [metadata = m_gathering.metadata(), zone = m_parts.clock.timeZone()] {
        return metadata.read(zone);
    };
    const auto reading = co_await attempt(onThreadOf(m_parts.threads, m_report.file, read));
    for (const QString& line : reading ? reading->captionLines : QStringList()) {
        m_parts.log.print(line);
    }
    const std::optional<QString> text = reading ? reading->facts.caption : std::nullopt;
    co_return text ? text->trimmed() : u"<nil>"_s;
}

} // namespace ostrelle
