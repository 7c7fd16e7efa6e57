// SPDX-License-Identifier: GPL-3.0-or-later
#include "pipeline/CaptionUndo.h"

#include "core/Attempt.h"
#include "metadata/ImageMetadata.h"
#include "pipeline/CaptionAcceptance.h"
#include "pipeline/FolderWork.h"
#include "pipeline/ImageClaiming.h"

#include <QFileInfo>
#include <algorithm>
#include <utility>

namespace ostrelle {

using namespace Qt::StringLiterals;

using Kind = UndoOutcome::Kind;
using State = JournalEntry::State;

namespace {

bool isSame(const std::optional<QString>& left, const std::optional<QString>& right) {
    return isSameText(left.value_or(QString()).trimmed(), right.value_or(QString()).trimmed());
}

/// Whether the other fields for captions, too, hold ours: whole, or as much as has room.
bool holdsNothingElse(const ImageFacts& facts, const QString& caption) {
    return std::all_of(facts.otherCaptions.begin(), facts.otherCaptions.end(), [&](const QString& other) {
        return isSame(other, caption) || caption.trimmed().startsWith(other.trimmed());
    });
}

/// The image that was renamed to this file: the same file, and none is left where it was.
std::optional<JournalEntry> renamed(const QList<JournalEntry>& candidates, const QString& file) {
    for (const JournalEntry& entry : candidates) {
        const bool isSameKind =
            QFileInfo(entry.file).suffix().compare(QFileInfo(file).suffix(), Qt::CaseInsensitive) == 0;
        if (isSameKind && !QFileInfo::exists(entry.file)) {
            return entry;
        }
    }
    return std::nullopt;
}

} // namespace

QCoro::Task<QStringList> CaptionUndo::lastRun() {
    const QList<JournalEntry> entries = co_await m_parts.journal.newestRun();
    QStringList files;
    for (const JournalEntry& entry : entries) {
        if (entry.state != State::undone && !files.contains(entry.file)) {
            files.append(entry.file);
        }
    }
    co_return files;
}

QCoro::Task<UndoOutcome> CaptionUndo::undo(QString file) {
    const auto entry = co_await attempt(entryOf(QFileInfo(file).absoluteFilePath()));
    if (!entry) {
        co_return {.file = file, .kind = Kind::failed, .reason = entry.words()};
    }
    if (!*entry) {
        co_return {.file = file,
                   .kind = Kind::unknown,
                   .reason = QFileInfo::exists(file) ? u"The journal has no caption for it."_s
                                                     : u"There is no such file."_s};
    }
    if ((*entry)->state == State::undone) {
        co_return {.file = file, .kind = Kind::left, .reason = u"Its caption was taken back before."_s};
    }
    const auto outcome = co_await attempt(undoEntry(**entry, file));
    co_return outcome.valueOr(
        {.file = file, .kind = Kind::failed, .reason = outcome ? QString() : outcome.words()});
}

QCoro::Task<std::optional<JournalEntry>> CaptionUndo::entryOf(QString file) {
    const std::optional<JournalEntry> known = co_await m_parts.journal.newestOf(file);
    if (known) {
        co_return known;
    }
    auto look = [file] { return FileStamp::at(file); };
    const std::optional<FileStamp> stamp = co_await onThreadOf(m_parts.threads, file, look);
    if (!stamp) {
        co_return std::nullopt;
    }
    const QList<JournalEntry> candidates =
        co_await m_parts.journal.newestLike(stamp->size, static_cast<qint64>(stamp->number));
    auto choose = [candidates, file] { return renamed(candidates, file); };
    co_return co_await onThreadOf(m_parts.threads, file, choose);
}

QCoro::Task<UndoOutcome> CaptionUndo::undoEntry(JournalEntry entry, QString file) {
    auto look = [file] { return QFileInfo::exists(file); };
    const bool isThere = co_await onThreadOf(m_parts.threads, file, look);
    if (!isThere) {
        co_return {.file = file, .kind = Kind::failed, .reason = u"There is no such file."_s};
    }
    const HeldImage claim = co_await claimImage(m_parts.claims, m_parts.threads, m_parts.log, file);
    if (!claim.isHeld()) {
        co_return {.file = file, .kind = Kind::failed, .reason = u"Another program is captioning it."_s};
    }
    const UndoOutcome outcome = co_await writeBack(entry, file);
    if (outcome.kind == Kind::undone) {
        co_await recordCaptioned(claim, m_parts.clock.now());
    }
    co_return outcome;
}

QCoro::Task<UndoOutcome> CaptionUndo::writeBack(JournalEntry entry, QString file) {
    const QTimeZone zone = m_parts.clock.timeZone();
    auto read = [file, zone] { return ImageMetadata(file).read(zone); };
    const MetadataReading reading = co_await onThreadOf(m_parts.threads, file, read);
    const std::optional<QString> now = reading.facts.caption;
    const bool isBack = isSame(now, entry.before) && !isSame(now, entry.after);
    const bool isOurs = isSame(now, entry.after) && holdsNothingElse(reading.facts, entry.after);
    if (!isBack && !isOurs) {
        co_return {.file = file,
                   .kind = Kind::left,
                   .reason = u"Its caption has been changed since."_s,
                   .caption = now};
    }
    std::optional<FileStamp> image = reading.image;
    if (!isBack) {
        const QString caption = entry.before.value_or(QString());
        const CaptionSource source{
            .facts = reading.facts, .zone = zone, .picture = {.stamp = image, .rendition = {}}};
        auto write = [file, caption, source](PlainLog& log) {
            return ImageMetadata(file).writeCaption(caption, source, log);
        };
        const WrittenCaption written =
            co_await onThreadOf(m_parts.threads, file, m_parts.log.console(), write);
        image = written.image;
    }
    co_await m_parts.journal.end(entry.key, State::undone, image);
    co_await m_parts.manifest.markProcessed(file, image);
    m_parts.log.printAndAppend(u"[Analyzer] Took back the caption of "_s + QFileInfo(file).fileName());
    co_return {.file = file, .kind = Kind::undone, .caption = entry.before};
}

} // namespace ostrelle
