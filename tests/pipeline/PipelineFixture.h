// SPDX-License-Identifier: GPL-3.0-or-later
#pragma once

#include "metadata/XMPWriter.h"
#include "metadata/sidecar/SidecarPath.h"
#include "pipeline/BatchRun.h"
#include "program/CaptionProgram.h"
#include "support/Await.h"
#include "support/RecordingLog.h"
#include "support/RecordingNotifications.h"
#include "support/Unprivileged.h"
#include "support/VirtualClock.h"

#include <gtest/gtest.h>
#include <sys/stat.h>

#include <QCoroFuture>
#include <QDir>
#include <QFile>
#include <QJsonArray>
#include <QJsonDocument>
#include <QJsonObject>
#include <QPromise>

#include "product/ApiKey.h"
#include "standins/DngBuilder.h"
#include "standins/JpegBuilder.h"
#include "standins/MemoryDefaults.h"
#include "standins/MemorySecrets.h"
#include "standins/ModelStandIn.h"
#include "standins/SportsScene.h"

namespace ostrelle {

/// Alerts that a test answers beforehand, or leaves open until close().
class AnsweredAlerts : public Alerts {
public:
    QCoro::Task<int> show(Alert alert) override {
        shown.append(alert);
        if (isOpen) {
            QFuture<void> answered = m_answered.future();
            co_await answered;
        }
        co_return answer;
    }
    void close() { m_answered.finish(); }

    QList<Alert> shown;
    int answer = 0;
    bool isOpen = false;

private:
    QPromise<void> m_answered;
};

/// Sandbox grants that are counted.
class CountedAccess : public FileAccess {
public:
    bool begin(const QString&) override {
        ++begun;
        return isGranting;
    }
    void end(const QString&) override { ++ended; }

    int begun = 0;
    int ended = 0;
    bool isGranting = true;
};

class AbsentRemote : public RemoteSource {
public:
    void start() override {}
    void stop() override {}
};

/// The pipeline over the stand-in for the model, in a folder of its own with a roster and a key.
class PipelineTest : public testing::Test {
protected:
    PipelineTest() {
        defaults.set(apiKeyName, QStringLiteral("test-key"));
        write(QStringLiteral("roster.txt"), "12\tSam Abel\n");
        settings.setCodeReplacementsFile(folder.filePath(QStringLiteral("roster.txt")));
        QObject::connect(&analyzer, &Analyzer::imageFinished, &analyzer,
                         [this](const ImageOutcome& image) { reports.append(image); });
    }

    QString write(const QString& name, const QByteArray& bytes) const {
        QFile file(folder.filePath(name));
        EXPECT_TRUE(file.open(QIODevice::WriteOnly) && file.write(bytes) == bytes.size());
        return file.fileName();
    }
    QByteArray read(const QString& name) const {
        QFile file(folder.filePath(name));
        return file.open(QIODevice::ReadOnly) ? file.readAll() : QByteArray();
    }
    /// A RAW image with a picture.
    QString rawImage(const QString& name = QStringLiteral("IMG_1.DNG")) const {
        static const QByteArray picture = dngFile(SportsScene(320, 200, 1));
        return write(name, picture);
    }
    /// A JPEG without metadata.
    QString jpegImage(const QString& name) const {
        static const QByteArray picture = jpegFile(SportsScene(320, 200, 1).image());
        return write(name, picture);
    }
    /// The sidecar of IMG_1, or another, with this caption.
    void sidecar(const QByteArray& caption, const QString& name = QStringLiteral("IMG_1.xmp")) const {
        write(name, "<x:xmpmeta xmlns:x='adobe:ns:meta/'><rdf:RDF "
                    "xmlns:rdf='http://www.w3.org/1999/02/22-rdf-syntax-ns#'>"
                    "<rdf:Description rdf:about='' xmlns:dc='http://purl.org/dc/elements/1.1/' "
                    "xmlns:photoshop='http://ns.adobe.com/photoshop/1.0/'><photoshop:Headline>Herons vs. "
                    "Foxes</photoshop:Headline>"
                    "<dc:rights><rdf:Alt><rdf:li xml:lang='x-default'>(A. "
                    "Photographer)</rdf:li></rdf:Alt></dc:rights>"
                    "<dc:creator><rdf:Seq><rdf:li>A. Photographer</rdf:li></rdf:Seq></dc:creator>"
                    "<dc:description><rdf:Alt><rdf:li xml:lang='x-default'>" +
                        caption +
                        "</rdf:li></rdf:Alt></dc:description></rdf:Description></rdf:RDF></x:xmpmeta>");
    }
    std::optional<QString> caption() const {
        return XMPWriter().readDefaultCaption(folder.filePath(QStringLiteral("IMG_1.xmp")));
    }
    /// The caption of an image in any folder.
    static std::optional<QString> captionOf(const QString& image) {
        RecordingLog lines;
        return image.endsWith(QStringLiteral("JPG")) ? XMPWriter().readEmbeddedCaption(image, lines)
                                                     : XMPWriter().readDefaultCaption(sidecarPath(image));
    }
    /// What a program works with that runs here. There may be several, over the same files.
    ProgramSurroundings surroundings() {
        return {.folders = folders,
                .endpoints = endpoints,
                .defaults = defaults,
                .settingsDefaults = defaults,
                .secrets = secrets,
                .notificationCenter = notificationCenter,
                .alerts = alerts,
                .events = events,
                .remote = remote,
                .access = access,
                .clock = clock,
                .console = console,
                .errors = console};
    }
    /// A batch that begins at that place of a run.
    QCoro::Task<QList<ImageOutcome>> captionBatch(QStringList files, qint64 startIndex = 0) {
        return captionBatchOf(program, files, startIndex);
    }
    static QCoro::Task<QList<ImageOutcome>> captionBatchOf(CaptionProgram& itsProgram, QStringList files,
                                                           qint64 startIndex = 0) {
        const AnalyzerParts parts = itsProgram.analyzerParts();
        Analyzer& analyzer = itsProgram.analyzer;
        ReadAhead ahead(parts.threads, files, parts.clock.timeZone(), false);
        BatchRun batch(parts, files, {.startIndex = startIndex, .begun = parts.clock.now()}, &ahead,
                       [&analyzer](const ImageOutcome& image) { Q_EMIT analyzer.imageFinished(image); });
        co_return co_await batch.execute();
    }
    /// A request that the model got.
    QJsonObject requestOf(qsizetype index) const {
        return QJsonDocument::fromJson(model.requests().at(index).body).object();
    }
    /// A reply of the model with this content.
    static StandInAnswer reply(const QString& content, bool hasUsage = true) {
        QJsonObject body{
            {QStringLiteral("id"), QStringLiteral("chatcmpl-1")},
            {QStringLiteral("choices"),
             QJsonArray{QJsonObject{{QStringLiteral("index"), 0},
                                    {QStringLiteral("message"),
                                     QJsonObject{{QStringLiteral("role"), QStringLiteral("assistant")},
                                                 {QStringLiteral("content"), content}}}}}}};
        if (hasUsage) {
            body.insert(QStringLiteral("usage"), QJsonObject{{QStringLiteral("prompt_tokens"), 1'000'000},
                                                             {QStringLiteral("completion_tokens"), 500'000},
                                                             {QStringLiteral("total_tokens"), 1'500'000}});
        }
        StandInAnswer answer;
        answer.body = QJsonDocument(body).toJson(QJsonDocument::Compact);
        return answer;
    }

    /// Runs the image to its end; the time in which its progress stays to be seen passes then.
    bool run(const QString& file) {
        status.setLastMessage(std::nullopt);
        const bool isDone = await(analyzer.analyzeSingle(file));
        clock.advance(CaptionProgress::usualLinger);
        return isDone;
    }
    /// Runs the task to its end; the short breaks between the images of a run pass at once.
    template <typename T>
    T drive(QCoro::Task<T> task) {
        driveUntil([&task] { return task.isReady(); });
        return task.operator co_await().await_resume();
    }
    void driveUntil(const std::function<bool()>& condition) {
        waitUntil([this, &condition] {
            if (!condition() && clock.waiting() > 0) {
                clock.advance(std::chrono::milliseconds(20));
            }
            return condition();
        });
    }
    static void setMode(const QString& path, mode_t mode) {
        ASSERT_EQ(::chmod(QFile::encodeName(path).constData(), mode), 0);
    }
    QStringList alertTitles() const {
        QStringList titles;
        for (const Alert& alert : alerts.shown) {
            titles.append(alert.title);
        }
        return titles;
    }
    QStringList logFile() const {
        return QString::fromUtf8(read(QStringLiteral("data/Analyzer.log"))).split(u'\n', Qt::SkipEmptyParts);
    }
    bool hasLogged(const QString& words) const { return logFile().filter(words).size() == 1; }

    UnprivilegedFolder folder;
    VirtualClock clock;
    RecordingLog console;
    MemoryDefaults defaults;
    MemorySecrets secrets;
    CountedAccess access;
    AnsweredAlerts alerts;
    AppEvents events;
    ModelStandIn model{"test-key"};
    RecordingNotifications notificationCenter;
    AbsentRemote remote;
    const AppFolders folders{.config = folder.filePath(QStringLiteral("config")),
                             .data = folder.filePath(QStringLiteral("data")),
                             .promptCache = folder.path(),
                             .manifest = folder.filePath(QStringLiteral("manifest")),
                             .cache = folder.filePath(QStringLiteral("cache")),
                             .runtime = {}};
    const ServiceEndpoints endpoints{.model = model.url()};
    CaptionProgram program{surroundings()};
    SettingsStore& settings = program.settings;
    StatusStore& status = program.status;
    CaptionProgress& progress = program.progress;
    UsageTracker& usage = program.usage;
    AnalyzerLog& log = program.log;
    PreviewCopies& previews = program.previews;
    ProcessedFilesManifest& manifest = program.manifest;
    CaptionTurns& turns = program.turns;
    ImageClaims& claims = program.claims;
    FolderThreads& threads = program.threads;
    Analyzer& analyzer = program.analyzer;
    QList<ImageOutcome> reports;
};

} // namespace ostrelle
