// SPDX-License-Identifier: GPL-3.0-or-later
#include "pipeline/CaptionWriting.h"

#include "core/Attempt.h"
#include "metadata/ImageMetadata.h"
#include "metadata/facts/OvertakenError.h"
#include "pipeline/FolderWork.h"
#include "pipeline/PromptComposition.h"

#include <QFileInfo>
#include <algorithm>

namespace ostrelle {

using namespace Qt::StringLiterals;

namespace {

/// The log lines around a write, for each kind of file that captions go into.
struct WriteLines {
    QString before;
    QString after;
    QString failed; ///< takes the image's name and the error
    QString mismatch;
    QString done; ///< takes the image's name
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

QString shown(const std::optional<QString>& caption) {
    return caption ? caption->trimmed() : u"<nil>"_s;
}

/// Logs one write, on the paths that log theirs.
class WriteLog {
public:
    WriteLog(AnalyzerLog& log, CaptionPath path, const PreparedImage& image)
        : m_log(log)
        , m_isOn(rulesOf(path).logsWrite)
        , m_lines(ImageMetadata(image.file).isEmbedded() ? embeddedWrite : sidecarWrite)
        , m_name(QFileInfo(image.file).fileName())
        , m_before(image.source.facts.caption) {}

    void begin(const QString& caption, const ScopedAccess& file, const ScopedAccess& folder) {
        append(u"[Analyzer] About to write caption (%1 bytes) for %2: \"%3\""_s.arg(
            QString::number(caption.toUtf8().size()), m_name, caption));
        const auto word = [](const ScopedAccess& access) {
            return access.isGranted() ? u"true"_s : u"false"_s;
        };
        append(file.isGranted() || folder.isGranted()
                   ? u"[Analyzer] Security-scoped access: file=%1, folder=%2"_s.arg(word(file), word(folder))
                   : u"[Analyzer] WARNING: No security-scoped access granted for write operation"_s);
        append(m_lines.before + shown(m_before)); // the write compares this with the file
    }
    void fail(const QString& words) {
        if (m_isOn) {
            m_log.printAndAppend(m_lines.failed.arg(m_name, words));
        }
    }
    void end(const WrittenCaption& written, const QString& caption) {
        for (const QString& line : m_isOn ? written.captionLines : QStringList()) {
            m_log.print(line);
        }
        const QString after = shown(written.caption);
        append(m_lines.after + after);
        append(isSameText(after, caption) ? m_lines.done.arg(m_name) : m_lines.mismatch);
    }

private:
    void append(const QString& line) {
        if (m_isOn) {
            m_log.appendToLog(line);
        }
    }

    AnalyzerLog& m_log;
    bool m_isOn;
    const WriteLines& m_lines;
    QString m_name;
    std::optional<QString> m_before;
};

/// The caption, or else what stands in another of the fields that the write goes over.
std::optional<QString> captionBefore(const ImageFacts& facts) {
    QStringList texts = facts.otherCaptions;
    texts.prepend(facts.caption.value_or(QString()));
    const auto text = std::find_if(texts.begin(), texts.end(),
                                   [](const QString& candidate) { return !candidate.trimmed().isEmpty(); });
    return text == texts.end() ? facts.caption : std::optional(*text);
}

JournalEntry journalEntry(const AnalyzerParts& parts, const PreparedImage& image, const QString& caption) {
    JournalEntry entry;
    entry.file = QFileInfo(image.file).absoluteFilePath();
    if (const std::optional<FileStamp>& stamp = image.source.picture.stamp) {
        entry.size = stamp->size;
        entry.inode = static_cast<qint64>(stamp->number);
    }
    entry.before = captionBefore(image.source.facts);
    entry.after = caption;
    entry.style = rawValue(parts.settings.captionStyle());
    entry.sport = rawValue(parts.settings.sport());
    entry.model = captionModel;
    return entry;
}

} // namespace

std::optional<QString> acceptReply(CaptionPath path, const QString& reply, const PreparedImage& image,
                                   const SettingsStore& settings, AnalyzerLog& log) {
    const AcceptanceRules rules = rulesOf(path);
    const QString name = QFileInfo(image.file).fileName();
    const QString caption = rules.takesFirstLine ? firstNonEmptyLine(reply) : reply;
    if (rules.keepsUnchanged && isSameText(caption, image.defaultCaption)) {
        if (!hasPlaceholder(caption)) {
            log.printAndAppend(
                u"[Analyzer] Model returned default caption unchanged for %1; leaving XMP as-is."_s.arg(
                    name));
            return std::nullopt;
        }
        log.printAndAppend(u"[Analyzer] WARNING: Model returned caption with placeholders unchanged for %1. "
                           "Caption may need manual editing."_s.arg(name));
    }
    return rules.appendsCredit ? finalizeCaption(caption, image.rights(), settings) : caption;
}

QCoro::Task<WrittenCaption> writeCaption(AnalyzerParts parts, CaptionPath path, PreparedImage image,
                                         QString caption) {
    const ScopedAccess fileAccess(parts.access, image.file);
    const ScopedAccess folderAccess(parts.access, QFileInfo(image.file).path());
    WriteLog lines(parts.log, path, image);
    lines.begin(caption, fileAccess, folderAccess);
    const QString entry = co_await parts.journal.begin(journalEntry(parts, image, caption));
    auto write = [image, caption](PlainLog& log) {
        return ImageMetadata(image.file).writeCaption(caption, image.source, log);
    };
    const auto written = co_await attempt(onThreadOf(parts.threads, image.file, parts.log.console(), write));
    const auto state = written ? JournalEntry::State::written : JournalEntry::State::failed;
    parts.journal.end(entry, state, written ? written->image : std::nullopt,
                      written ? written->caption : std::nullopt);
    if (!written) {
        if (!written.failureAs<OvertakenError>()) {
            lines.fail(written.words());
        }
        written.rethrow();
    }
    if (rulesOf(path).marksManifest) {
        co_await parts.manifest.markProcessed(image.file, written->image);
    }
    lines.end(*written, caption);
    co_return *written;
}

} // namespace ostrelle
