// SPDX-License-Identifier: GPL-3.0-or-later
#pragma once

#include "platform/PathReferences.h"
#include "standins/MemoryDefaults.h"
#include "standins/MemorySecrets.h"
#include "support/Await.h"
#include "support/RecordingLog.h"
#include "support/Unprivileged.h"
#include "support/VirtualClock.h"
#include "transfer/LocalFolderScan.h"

#include <gtest/gtest.h>

#include <QDir>
#include <QFile>
#include <QHash>
#include <QSemaphore>
#include <QtConcurrentRun>
#include <functional>

namespace ostrelle {

/// A log that lets a test step in when a line is told.
class WatchedLog : public RecordingLog {
public:
    void print(const QString& line) override {
        RecordingLog::print(line);
        if (onLine) {
            onLine(line);
        }
    }
    qsizetype count(const QString& words) const { return lines.filter(words).size(); }
    bool has(const QString& line) const { return lines.contains(line); }

    std::function<void(const QString&)> onLine;
};

/// Captions nothing, takes its turn and its time and remembers what it was asked for.
class CaptioningStandIn {
public:
    CaptioningStandIn(Clock& clock, CaptionTurns& turns, ProcessedFilesManifest& manifest)
        : m_clock(clock), m_turns(turns), m_manifest(manifest) {}

    QCoro::Task<ImageOutcome> caption(ImageRequest request) {
        const QString name = QFileInfo(request.file).fileName();
        const auto turn = co_await m_turns.imageTurn();
        if (!turn) {
            co_return ImageOutcome();
        }
        begun.append(name);
        co_await m_clock.sleep(duration);
        ended.append(name);
        ImageOutcome outcome;
        outcome.kind = results.value(name, OutcomeKind::captioned);
        if (isDone(outcome.kind)) {
            co_await m_manifest.markProcessed(request.file);
        }
        if (outcome.kind == OutcomeKind::unwritable) {
            outcome.editConditions = EditConditions::of(request.file);
        }
        co_return outcome;
    }

    QStringList begun;
    QStringList ended;
    QHash<QString, OutcomeKind> results; ///< other than captioned
    std::chrono::milliseconds duration{10};

private:
    Clock& m_clock;
    CaptionTurns& m_turns;
    ProcessedFilesManifest& m_manifest;
};

/// Sandbox grants that are all given and have to be given back.
class PairedAccess : public FileAccess {
public:
    bool begin(const QString& path) override {
        held.append(path);
        all.append(path);
        return true;
    }
    void end(const QString& path) override { EXPECT_TRUE(held.removeOne(path)); }

    QStringList held;
    QStringList all;
};

/// Keeps a folder's thread busy, as a network share does that hangs.
class HangingFolder {
public:
    HangingFolder(FolderThreads& threads, const QString& folder)
        : m_hanging(
              QtConcurrent::run(threads.of(folder), [semaphore = m_semaphore] { semaphore->acquire(); })) {}
    ~HangingFolder() { recover(); }
    HangingFolder(const HangingFolder&) = delete;
    HangingFolder& operator=(const HangingFolder&) = delete;

    void recover() {
        m_semaphore->release();
        m_hanging.waitForFinished();
        m_semaphore->tryAcquire();
    }

private:
    std::shared_ptr<QSemaphore> m_semaphore = std::make_shared<QSemaphore>();
    QFuture<void> m_hanging;
};

/// The local scan over an ingest folder of its own.
class LocalScanTest : public testing::Test {
protected:
    LocalScanTest() {
        QDir().mkpath(ingest);
        settings.setIngestFolder(ingest);
    }
    ~LocalScanTest() override {
        log.onLine = {};
        finishAll();
    }

    QString path(const QString& name) const { return ingest + u'/' + name; }
    void write(const QString& name, const QByteArray& bytes = "picture") const {
        QFile file(path(name));
        ASSERT_TRUE(file.open(QIODevice::WriteOnly) && file.write(bytes) == bytes.size());
    }
    static QByteArray sidecar(const QString& caption) {
        return "<x:xmpmeta xmlns:x='adobe:ns:meta/'><rdf:RDF "
               "xmlns:rdf='http://www.w3.org/1999/02/22-rdf-syntax-ns#' "
               "xmlns:dc='http://purl.org/dc/elements/1.1/'><rdf:Description><dc:description><rdf:Alt>"
               "<rdf:li xml:lang='x-default'>" +
               caption.toUtf8() +
               "</rdf:li></rdf:Alt></dc:description></rdf:Description></rdf:RDF></x:xmpmeta>";
    }

    /// Begins a scan and lets it come as far as it comes without time passing.
    void look() {
        const qsizetype before = log.count(QStringLiteral("Scan complete"));
        scan.startScan(ingest);
        waitUntil([&] { return log.count(QStringLiteral("Scan complete")) > before; });
    }
    /// Lets time pass until no scan and no caption is left.
    void finishAll() {
        const QCoro::Task<> finished = scan.finished();
        waitUntil([&] {
            if (!finished.isReady()) {
                clock.advance(std::chrono::seconds(1));
            }
            return finished.isReady();
        });
    }
    void runScan() {
        scan.startScan(ingest);
        finishAll();
    }
    /// Lets queued images rest, and waits until that many are being captioned or are done.
    void rest(qsizetype begun) {
        clock.advance(std::chrono::seconds(2));
        waitUntil([&] { return captioning.begun.size() >= begun; });
    }

    UnprivilegedFolder folder;
    QString ingest = folder.filePath(QStringLiteral("ingest"));
    VirtualClock clock;
    WatchedLog log;
    MemoryDefaults defaults;
    MemorySecrets secrets;
    PathReferences references;
    PairedAccess access;
    AppEvents events;
    FolderThreads threads;
    KeychainHelper keychain{secrets, log};
    SettingsStore settings{defaults, keychain, references, log};
    ProcessedFilesManifest manifest{folder.filePath(QStringLiteral("data/processed_files.json")), threads,
                                    clock, log, events};
    ProcessingTracker tracker{clock};
    CaptionTurns turns;
    CaptioningStandIn captioning{clock, turns, manifest};
    LocalFolderScan scan{
        {.settings = settings,
         .manifest = manifest,
         .tracker = tracker,
         .access = access,
         .turns = turns,
         .threads = threads,
         .clock = clock,
         .log = log,
         .captioning = [this](ImageRequest request) { return captioning.caption(request); }}};
};

} // namespace ostrelle
