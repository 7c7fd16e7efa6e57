// SPDX-License-Identifier: GPL-3.0-or-later
#pragma once

#include "pipeline/PipelineFixture.h"
#include "support/HangingThreads.h"
#include "transfer/LocalFolderScan.h"

#include <QFileInfo>
#include <QHash>

namespace ostrelle {

/// The local scan of the ingest folder, in the whole program except for the captioning.
class LocalScanTest : public PipelineTest {
protected:
    LocalScanTest() { settings.setIngestFolder(ingest); }
    ~LocalScanTest() override {
        console.onLine = {};
        finishAll();
    }

    /// The path of an image in the ingest folder.
    QString path(const QString& name) const { return ingest + u'/' + name; }
    void write(const QString& name, const QByteArray& bytes = "picture") const {
        PipelineTest::write(QStringLiteral("ingest/") + name, bytes);
    }
    void sidecar(const QByteArray& caption, const QString& name) const {
        PipelineTest::sidecar(caption, QStringLiteral("ingest/") + name);
    }
    bool isPrinted(const QString& line) const { return console.has(QStringLiteral("[AppDelegate] ") + line); }
    /// The printed lines, in order.
    QStringList printed() const { return console.lines.filter(QStringLiteral("[AppDelegate]")); }

    /// Starts a scan and lets it run as far as it can without time passing.
    void look() {
        const qsizetype before = console.count(QStringLiteral("Scan complete"));
        scan.startScan(ingest);
        waitUntil([&] { return console.count(QStringLiteral("Scan complete")) > before; });
    }
    /// Lets time pass until no scan and no caption is left.
    void finishAll() {
        const QCoro::Task<> finished = scan.finished();
        driveUntil([&finished] { return finished.isReady(); }, std::chrono::seconds(1));
    }
    void runScan() {
        scan.startScan(ingest);
        finishAll();
    }
    /// Lets queued images rest, and waits until captioning has begun for `count` images.
    void rest(qsizetype count) {
        clock.advance(std::chrono::seconds(2));
        waitUntil([&] { return begun.size() >= count; });
    }

    /// Captions nothing, but takes a turn and some time, and records the request.
    QCoro::Task<ImageOutcome> takeTurn(ImageRequest request) {
        const QString name = QFileInfo(request.file).fileName();
        const auto turn = co_await turns.imageTurn();
        if (!turn) {
            co_return ImageOutcome();
        }
        begun.append(name);
        co_await clock.sleep(duration);
        ended.append(name);
        ImageOutcome outcome;
        outcome.kind = results.value(name, OutcomeKind::captioned);
        if (isDone(outcome.kind)) {
            co_await manifest.markProcessed(request.file);
        }
        outcome.editConditions = EditConditions::of(request.file);
        co_return outcome;
    }

    QStringList begun;
    QStringList ended;
    QHash<QString, OutcomeKind> results; ///< other than captioned
    std::chrono::milliseconds duration{10};
    const QString ingest = folderWith(QStringLiteral("ingest"));
    ProcessingTracker& tracker = program.tracker;
    LocalFolderScan scan{
        {.settings = settings,
         .manifest = manifest,
         .tracker = tracker,
         .access = access,
         .turns = turns,
         .count = program.queue,
         .threads = threads,
         .clock = clock,
         .log = console,
         .captioning = [this](ImageRequest request) { return takeTurn(request); },
         .onLooked = [this](const std::optional<QString>& trouble) { status.setSourceTrouble(trouble); }}};
};

} // namespace ostrelle
