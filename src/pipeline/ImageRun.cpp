// SPDX-License-Identifier: GPL-3.0-or-later
#include "pipeline/ImageRun.h"

#include "core/Attempt.h"
#include "core/Text.h"
#include "metadata/XmlDocument.h"
#include "pipeline/AnalyzerError.h"
#include "pipeline/CaptionAcceptance.h"
#include "pipeline/CodeReplacementsReading.h"
#include "pipeline/PromptBuilder.h"
#include "pipeline/SidecarCreation.h"
#include "platform/ApiKey.h"
#include "platform/FileError.h"
#include "platform/Files.h"

#include <QFile>
#include <QFileInfo>
#include <QStringDecoder>
#include <algorithm>

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

ImageRun::ImageRun(AnalyzerParts parts, QString file)
    : m_parts(parts)
    , m_file(std::move(file))
    , m_name(QFileInfo(m_file).fileName())
    , m_metadata(m_file, parts.xmp, parts.log.console()) {
    m_report.file = m_file;
}

QString ImageRun::defaultCaption() const {
    return m_readCaption.value_or(u"No caption"_s);
}

QCoro::Task<> ImageRun::execute() {
    requireKey();
    if (!m_metadata.isEmbedded()) {
        co_await ensureSidecar();
    }
    co_await readCaption();
    if (!m_parts.settings.alwaysOverwriteCaptions() && isRealCaption(m_readCaption.value_or(QString()))) {
        m_parts.log.printAndAppend(
            u"[Analyzer] %1 already has caption, skipping (overwrite disabled)"_s.arg(m_name));
        m_report.outcome = ImageReport::Outcome::skipped;
        m_report.reason = u"It already has a caption."_s;
        co_return;
    }
    co_await readContext();
    co_await dumpSidecar();
    co_await readRightsAndCreator();
    m_roster = co_await readRoster(m_parts);
    co_await extractPreview();
    co_await savePreview();
    const QString request = co_await prompt();
    logRequest(request);
    const QString reply = co_await askModel(request);
    co_await acceptCaption(reply);
}

QCoro::Task<QString> ImageRun::composePrompt() {
    if (m_metadata.isEmbedded() || QFileInfo::exists(m_metadata.sidecar())) {
        co_await readCaption();
        co_await readContext();
        co_await readRightsAndCreator();
    }
    m_roster = co_await readRoster(m_parts);
    co_return co_await prompt();
}

void ImageRun::requireKey() const {
    if (apiKey(m_parts.defaults).isEmpty()) {
        throw AnalyzerError(AnalyzerError::missingKey,
                            u"Please enter your OpenAI API key in Settings to continue captioning images."_s);
    }
}

QCoro::Task<> ImageRun::ensureSidecar() {
    if (QFileInfo::exists(m_metadata.sidecar())) {
        co_return;
    }
    const auto created = co_await attempt(createSidecar(m_parts, m_file));
    if (created) {
        co_return;
    }
    m_parts.log.printAndAppend(
        u"[Analyzer] Failed to create XMP sidecar for RAW file %1 in folder: %2. Error: %3. This may be a "
        "permissions issue. Try selecting both the RAW and XMP files, or move the file to a different folder "
        "with "
        "write permissions."_s.arg(m_name, QFileInfo(m_file).path(), created.words()));
    created.rethrow();
}

QCoro::Task<> ImageRun::readCaption() {
    const auto caption = co_await attempt(m_metadata.readCaption());
    if (caption) {
        m_readCaption = *caption ? std::optional((*caption)->trimmed()) : std::nullopt;
        m_report.captionBefore = m_readCaption;
        co_return;
    }
    const auto fileError = caption.failureAs<FileError>();
    if (!m_metadata.isEmbedded() && fileError && fileError->isPermissionDenied()) {
        co_await recreateSidecar();
        co_return;
    }
    m_parts.log.printAndAppend(
        u"[Analyzer] Could not read metadata for %1: %2"_s.arg(m_name, caption.words()));
    caption.rethrow();
}

/// A sidecar that nobody may read is of no use to anybody: a new one takes its place, without a caption.
QCoro::Task<> ImageRun::recreateSidecar() {
    m_parts.log.print(
        u"[Analyzer] Permission error reading default caption from XMP for %1, attempting to recreate "
        "sidecar..."_s.arg(m_name));
    const ScopedAccess fileAccess(m_parts.access, m_metadata.sidecar());
    const ScopedAccess folderAccess(m_parts.access, QFileInfo(m_metadata.sidecar()).path());
    auto recreate = [xmp = m_parts.xmp, sidecar = m_metadata.sidecar()] {
        // Not removed but put aside, if that can be: its owner may still want to know what is in it.
        if (!QFile::rename(sidecar, sidecar + u".unreadable"_s)) {
            QFile::remove(sidecar);
        }
        xmp.createEmptySidecar(sidecar);
    };
    const auto recreated = co_await attemptOffMainThread(recreate);
    if (!recreated) {
        m_parts.log.printAndAppend(
            u"[Analyzer] Could not read metadata for %1: %2"_s.arg(m_name, recreated.words()));
        recreated.rethrow();
    }
    m_parts.log.print(u"[Analyzer] Recreated unreadable XMP sidecar for "_s + m_name);
}

QCoro::Task<> ImageRun::readContext() {
    const auto context = co_await attempt(m_metadata.readContext(m_parts.clock.timeZone()));
    if (!context) {
        m_parts.log.printAndAppend(
            u"[Analyzer] Could not read context for %1: %2"_s.arg(m_name, context.words()));
        context.rethrow();
    }
    m_context = *context;
}

/// For diagnosis only, also of a sidecar that lies beside a JPEG and is not used.
QCoro::Task<> ImageRun::dumpSidecar() {
    if (!QFileInfo::exists(m_metadata.sidecar())) {
        if (m_metadata.isEmbedded()) {
            m_parts.log.printAndAppend(
                u"[Analyzer] JPEG file %1 has no XMP sidecar (will use embedded metadata)"_s.arg(m_name));
        }
        co_return;
    }
    auto dump = [sidecar = m_metadata.sidecar(), name = m_name] { return sidecarDump(sidecar, name); };
    const auto text = co_await attemptOffMainThread(dump);
    m_parts.log.printAndAppend(
        text ? *text : u"[Analyzer] Failed to dump XMP for %1: %2"_s.arg(m_name, text.words()));
}

QCoro::Task<> ImageRun::readRightsAndCreator() {
    const auto rights = co_await attempt(m_metadata.readRights());
    const auto creator = co_await attempt(m_metadata.readCreator());
    m_rights = rights.valueOr(std::nullopt);
    m_creator = creator.valueOr(std::nullopt);
}

QCoro::Task<> ImageRun::extractPreview() {
    constexpr double longestSide = 1024; // pixels
    constexpr double jpegQuality = 0.6;
    constexpr double rawQuality = 0.85;
    const double quality = m_metadata.isEmbedded() ? jpegQuality : rawQuality;
    auto extract = [previewer = m_parts.previewer, file = m_file, quality] {
        return previewer.extractPreview(file, longestSide, quality);
    };
    const auto jpeg = co_await attemptOffMainThread(extract);
    if (!jpeg) {
        m_parts.log.printAndAppend(
            u"[Analyzer] Failed to extract preview for %1: %2"_s.arg(m_name, jpeg.words()));
        jpeg.rethrow();
    }
    m_jpeg = *jpeg;
}

/// A copy to look at later; the run goes on without it.
QCoro::Task<> ImageRun::savePreview() {
    auto save = [previews = m_parts.previews, jpeg = m_jpeg, file = m_file] {
        previews.save(jpeg, file);
        return previews.path(file);
    };
    const auto path = co_await attemptOffMainThread(save);
    if (path) {
        m_report.previewPath = *path;
        m_parts.log.print(u"[Analyzer] Saved preview to: "_s + *path);
    }
}

QCoro::Task<QString> ImageRun::prompt() {
    const SettingsStore& settings = m_parts.settings;
    PromptQuery query;
    query.style = settings.captionStyle();
    query.sport = settings.sport();
    query.fallback = settings.fallbackBehavior();
    query.includeOffenseDefense = settings.includeOffenseDefense();
    query.prioritizeAudioFiles = settings.prioritizeAudioFiles();
    const PromptTemplates templates = co_await m_parts.prompts.fetchPrompts(query);
    AnalyzerLog& log = m_parts.log;
    log.appendToLog(m_context.event ? u"[Analyzer] ✓ Event found in context: '%1'"_s.arg(*m_context.event)
                                    : u"[Analyzer] ✗ WARNING: No event found in context"_s);
    if (m_roster.isTruncated()) {
        log.print(truncationWarning(m_roster));
        log.appendToLog(truncationLogLine(m_roster));
    }
    co_return buildPrompt(facts(), query, templates, m_roster, m_parts.clock.timeZone());
}

CaptionFacts ImageRun::facts() const {
    const SettingsStore& settings = m_parts.settings;
    CaptionFacts facts;
    facts.context = m_context;
    facts.rights = m_rights;
    facts.defaultRightsFallback = settings.defaultRightsFallback();
    facts.captionStyle = settings.captionStyle();
    facts.sport = settings.sport();
    facts.useTeamIdentification = settings.useTeamIdentification();
    facts.team1 = {settings.team1Name(), settings.team1Color()};
    facts.team2 = {settings.team2Name(), settings.team2Color()};
    facts.defaultCaption = defaultCaption();
    return facts;
}

void ImageRun::logRequest(const QString& prompt) {
    constexpr qsizetype headCharacters = 1200;
    constexpr qsizetype tailCharacters = 500;
    AnalyzerLog& log = m_parts.log;
    log.appendToLog(contextIsEmpty(m_context)
                        ? u"[Analyzer] Context present: NO"_s
                        : u"[Analyzer] Context present: YES — "_s + contextDescription(m_context));
    for (const QString& line : logLines(m_roster)) {
        log.appendToLog(line);
    }
    log.appendToLog(m_creator ? u"[Analyzer] XMP creator present: YES — "_s + *m_creator
                              : u"[Analyzer] XMP creator present: NO"_s);
    if (m_rights) {
        log.appendToLog(u"[Analyzer] XMP rights present: YES"_s);
        log.appendToLog(u"[Analyzer] XMP rights FULL VALUE: \"%1\""_s.arg(*m_rights));
        log.printAndAppend(u"[Analyzer] XMP rights will appear in Context as: Rights: "_s + *m_rights);
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
    const QString model = u"gpt-4o-mini"_s;
    constexpr int maxTokens = 180;
    constexpr double temperature = 0.2;
    const auto reply =
        co_await attempt(m_parts.openAI.generateCaption(m_jpeg, prompt, model, maxTokens, temperature));
    if (!reply) {
        m_parts.log.printAndAppend(
            u"[Analyzer] OpenAI generateCaption failed for %1: %2"_s.arg(m_name, reply.words()));
        reply.rethrow();
    }
    if (reply->usage) {
        m_parts.usage.recordUsage(reply->usage->promptTokens, reply->usage->completionTokens);
        m_report.cost = UsageTracker::costOf(reply->usage->promptTokens, reply->usage->completionTokens);
    }
    co_return reply->text;
}

QCoro::Task<> ImageRun::acceptCaption(QString reply) {
    const QString caption = firstNonEmptyLine(reply);
    if (isSameText(caption, defaultCaption())) {
        if (!hasPlaceholder(caption)) {
            m_parts.log.printAndAppend(
                u"[Analyzer] Model returned default caption unchanged for %1; leaving XMP as-is."_s.arg(
                    m_name));
            m_report.outcome = ImageReport::Outcome::skipped;
            m_report.reason = u"The model returned the existing caption unchanged."_s;
            co_return;
        }
        m_parts.log.printAndAppend(
            u"[Analyzer] WARNING: Model returned caption with placeholders unchanged for %1. "
            "Caption may need manual editing."_s.arg(m_name));
    }
    co_await writeCaption(caption);
    m_report.outcome = ImageReport::Outcome::captioned;
    m_report.captionAfter = caption;
}

QCoro::Task<> ImageRun::writeCaption(QString caption) {
    AnalyzerLog& log = m_parts.log;
    log.appendToLog(u"[Analyzer] About to write caption (%1 bytes) for %2: \"%3\""_s.arg(
        QString::number(caption.toUtf8().size()), m_name, caption));
    const ScopedAccess fileAccess(m_parts.access, m_file);
    const ScopedAccess folderAccess(m_parts.access, QFileInfo(m_file).path());
    const auto words = [](bool isGranted) { return isGranted ? u"true"_s : u"false"_s; };
    log.appendToLog(fileAccess.isGranted() || folderAccess.isGranted()
                        ? u"[Analyzer] Security-scoped access: file=%1, folder=%2"_s.arg(
                              words(fileAccess.isGranted()), words(folderAccess.isGranted()))
                        : u"[Analyzer] WARNING: No security-scoped access granted for write operation"_s);
    const WriteLines& lines = m_metadata.isEmbedded() ? embeddedWrite : sidecarWrite;
    const QString before = co_await captionForLog();
    log.appendToLog(lines.before + before);
    const auto written = co_await attempt(m_metadata.writeCaption(caption));
    if (!written) {
        log.printAndAppend(lines.failed.arg(m_name, written.words()));
        written.rethrow();
    }
    const QString after = co_await captionForLog();
    log.appendToLog(lines.after + after);
    log.appendToLog(isSameText(after, caption) ? lines.done.arg(m_name) : lines.mismatch);
}

QCoro::Task<QString> ImageRun::captionForLog() {
    const auto caption = co_await attempt(m_metadata.readCaption());
    const std::optional<QString> text = caption.valueOr(std::nullopt);
    co_return text ? text->trimmed() : u"<nil>"_s;
}

} // namespace ostrelle
