// SPDX-License-Identifier: GPL-3.0-or-later
#include "state/ProcessedFilesManifest.h"

#include "core/Attempt.h"
#include "core/Event.h"
#include "core/OnThreadPool.h"
#include "state/ManifestFile.h"

#include <QDateTime>
#include <QDir>
#include <QFileInfo>
#include <QList>
#include <QSet>
#include <QThreadPool>
#include <utility>

namespace ostrelle {

using namespace Qt::StringLiterals;

/// Shared with the operations under way, which may outlive the manifest. Its references must not be used once
/// it is no longer open.
struct ProcessedFilesManifest::State {
    ProcessedFilesManifest* owner;
    FolderThreads& threads;
    Clock& clock;
    PlainLog& log;
    AppEvents& events;
    std::shared_ptr<ManifestFile> file; // for the running save, on its thread
    bool isOpen = true;

    QSet<ProcessedFileEntry> entries = {};
    QSet<QString> names = {};

    bool isSaving = false;
    QList<ProcessedFileEntry> unsaved = {}; // for the next save
    std::optional<Event> nextSave = {};     // its end; nothing if none is wanted
    QString savingFailure = {};

    void insert(const ProcessedFileEntry& entry) {
        entries.insert(entry);
        names.insert(entry.filename);
    }
    /// Reserves room for the entries and for more than one run adds, as a growing hash blocks the window.
    void makeRoom(qsizetype count) {
        constexpr qsizetype mostOfARun = 250'000;
        entries.reserve(count + mostOfARun);
        names.reserve(count + mostOfARun);
    }
    /// Queues a new entry for the next save. Returns how many entries there are.
    qsizetype add(const ProcessedFileEntry& entry) {
        if (!entries.contains(entry)) {
            insert(entry);
            unsaved.append(entry);
        }
        return entries.size();
    }
    void takeOver(const ManifestFile::Outcome& outcome) {
        for (const ProcessedFileEntry& entry : outcome.foreign) {
            insert(entry);
            unsaved.removeAll(entry); // the file has it
        }
        if (!outcome.isNothingLost) {
            print(u"[ProcessedFilesManifest] A damaged manifest was replaced without a copy, as several are "
                  "kept already"_s);
        }
    }
    void setSavingFailure(const QString& words) {
        if (words != std::exchange(savingFailure, words) && isOpen) {
            Q_EMIT owner->savingFailureChanged();
        }
    }
    void print(const QString& line) const {
        if (isOpen) {
            log.print(line);
        }
    }
};

ProcessedFilesManifest::ProcessedFilesManifest(const QString& path, FolderThreads& threads, Clock& clock,
                                               PlainLog& log, AppEvents& events)
    : m_state(std::make_shared<State>(State{.owner = this,
                                            .threads = threads,
                                            .clock = clock,
                                            .log = log,
                                            .events = events,
                                            .file = std::make_shared<ManifestFile>(path)})) {
    m_state->makeRoom(0);
    load(path);
}

ProcessedFilesManifest::~ProcessedFilesManifest() {
    m_state->isOpen = false;
}

void ProcessedFilesManifest::load(const QString& path) {
    // The first save tries again, and logs a failure.
    [[maybe_unused]] const bool isMade = QDir().mkpath(QFileInfo(path).path());
    QList<ProcessedFileEntry> stored;
    try {
        stored = m_state->file->load();
    } catch (const Error&) {
        m_state->log.print(u"[ProcessedFilesManifest] Starting with empty manifest"_s);
        return;
    }
    m_state->makeRoom(stored.size());
    for (const ProcessedFileEntry& entry : stored) {
        m_state->insert(entry);
    }
    m_state->log.print(u"[ProcessedFilesManifest] Loaded "_s + QString::number(count()) +
                       u" previously processed files"_s);
}

bool ProcessedFilesManifest::isProcessed(const ProcessedFileEntry& entry) const {
    return m_state->entries.contains(entry);
}

bool ProcessedFilesManifest::isProcessedByName(const QString& filename) const {
    return m_state->names.contains(filename);
}

QString ProcessedFilesManifest::savingFailure() const {
    return m_state->savingFailure;
}

QCoro::Task<> ProcessedFilesManifest::refresh() {
    const auto state = m_state;
    if (state->isSaving) {
        co_return; // the save takes in the same entries
    }
    state->isSaving = true;
    const auto takeIn = [file = state->file] { return file->refresh(); };
    const auto foreign = co_await attemptOffMainThread(takeIn);
    state->isSaving = false;
    if (foreign) {
        state->takeOver({.foreign = *foreign});
        if (!foreign->isEmpty() && state->isOpen) {
            Q_EMIT state->events.manifestUpdated();
        }
    }
    if (state->nextSave) {
        runSaves(state); // another image was marked meanwhile
    }
}

qsizetype ProcessedFilesManifest::count() const {
    return m_state->entries.size();
}

QCoro::Task<bool> ProcessedFilesManifest::isProcessed(QString file) {
    const auto state = m_state; // after the first await, the manifest may be gone
    const auto read = [file] { return ProcessedFileEntry::of(file); };
    QThreadPool* thread = state->threads.of(QFileInfo(file).path());
    const std::optional<ProcessedFileEntry> entry = co_await onThreadPool(thread, read);
    co_return entry ? state->entries.contains(*entry) : state->names.contains(QFileInfo(file).fileName());
}

QCoro::Task<> ProcessedFilesManifest::markProcessed(QString file, std::optional<FileStamp> stamp) {
    const auto state = m_state;
    const QString name = QFileInfo(file).fileName();
    const QDateTime now = state->clock.now();
    const auto read = [file, stamp] {
        return stamp ? ProcessedFileEntry::of(file, *stamp) : ProcessedFileEntry::of(file);
    };
    QThreadPool* thread = state->threads.of(QFileInfo(file).path());
    const std::optional<ProcessedFileEntry> found = co_await onThreadPool(thread, read);
    if (!found) {
        state->print(u"[ProcessedFilesManifest] Warning: Could not read file attributes for "_s + name +
                     u", using filename only"_s);
    }
    const ProcessedFileEntry entry = found.value_or(ProcessedFileEntry::placeholder(file, now));
    const qsizetype total = state->add(entry);
    co_await save(state);
    state->print(u"[ProcessedFilesManifest] Marked as processed: %1 (size: %2, date: %3) (total: %4)"_s.arg(
        name, QString::number(entry.fileSize), entry.date().toString(u"yyyy-MM-dd HH:mm:ss '+0000'"),
        QString::number(total)));
    if (state->isOpen) {
        Q_EMIT state->events.manifestUpdated();
    }
}

/// Resumes when a save has ended that began with this call or later.
QCoro::Task<> ProcessedFilesManifest::save(std::shared_ptr<State> state) {
    if (!state->nextSave) {
        state->nextSave.emplace();
    }
    const Event ended = *state->nextSave;
    if (!state->isSaving) {
        runSaves(state); // its frame owns itself
    }
    co_await ended.happened();
}

/// One save at a time, each with all that was added before it began.
QCoro::Task<> ProcessedFilesManifest::runSaves(std::shared_ptr<State> state) {
    state->isSaving = true;
    while (state->nextSave) {
        const Event ended = *std::exchange(state->nextSave, std::nullopt);
        const auto append = [file = state->file, added = std::exchange(state->unsaved, {})] {
            return file->append(added);
        };
        const auto saved = co_await attemptOffMainThread(append);
        if (saved) {
            state->takeOver(*saved);
        } else {
            state->print(u"[ProcessedFilesManifest] Error saving manifest: "_s + saved.words());
        }
        state->setSavingFailure(saved ? QString() : saved.words());
        ended.happen();
    }
    state->isSaving = false;
}

} // namespace ostrelle
