// SPDX-License-Identifier: GPL-3.0-or-later
#pragma once

#include "metadata/XMPWriter.h"
#include "metadata/sidecar/SidecarPath.h"
#include "pipeline/Analyzer.h"
#include "platform/PathReferences.h"
#include "promptserver/PromptServer.h"
#include "support/Await.h"
#include "support/RecordingLog.h"
#include "support/RecordingNotifications.h"
#include "support/Unprivileged.h"
#include "support/VirtualClock.h"

#include <gtest/gtest.h>

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

/// The pipeline over the stand-in for the model, in a folder of its own with a roster and a key.
class PipelineTest : public testing::Test {
protected:
    PipelineTest() {
        defaults.set(apiKeyName, QStringLiteral("test-key"));
        write(QStringLiteral("roster.txt"), "12\tSam Abel\n");
        settings.setCodeReplacementsFile(folder.filePath(QStringLiteral("roster.txt")));
        QObject::connect(&analyzer, &Analyzer::imageFinished, &analyzer,
                         [this](const ImageReport& report) { reports.append(report); });
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
    /// What an analyzer takes, with the turns and the claims of a program of its own.
    AnalyzerParts partsWith(CaptionTurns& itsTurns, ImageClaims& itsClaims) {
        return {.settings = settings,
                .status = status,
                .usage = usage,
                .manifest = manifest,
                .openAI = openAI,
                .prompts = prompts,
                .defaults = defaults,
                .log = log,
                .previews = previews,
                .access = access,
                .alerts = alerts,
                .notifications = notifications,
                .events = events,
                .clock = clock,
                .turns = itsTurns,
                .threads = threads,
                .claims = itsClaims};
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

    /// Runs the image to its end; the time in which its progress stays to be seen passes at once.
    bool run(const QString& file) {
        bool isDone = false;
        bool result = false;
        const auto collect = [](QCoro::Task<bool> task, bool* isDone, bool* result) -> QCoro::Task<> {
            *result = co_await std::move(task);
            *isDone = true;
        };
        status.setLastMessage(std::nullopt);
        const QCoro::Task<> collected = collect(analyzer.analyzeSingle(file), &isDone, &result);
        waitUntil([this, &isDone] {
            if (!isDone && status.lastMessage() && clock.waiting() > 0) {
                clock.advance(std::chrono::seconds(2));
            }
            return isDone;
        });
        return result;
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
    QStringList logFile() const {
        return QString::fromUtf8(read(QStringLiteral("data/Analyzer.log"))).split(u'\n', Qt::SkipEmptyParts);
    }
    bool hasLogged(const QString& words) const { return logFile().filter(words).size() == 1; }

    UnprivilegedFolder folder;
    VirtualClock clock;
    FolderThreads threads;
    ImageClaims claims{folder.filePath(QStringLiteral("manifest/claims"))};
    RecordingLog console;
    MemoryDefaults defaults;
    MemorySecrets secrets;
    PathReferences references;
    CountedAccess access;
    AnsweredAlerts alerts;
    AppEvents events;
    ModelStandIn model{"test-key"};
    KeychainHelper keychain{secrets, console};
    SettingsStore settings{defaults, keychain, references, console};
    StatusStore status{defaults, clock};
    UsageTracker usage{defaults, clock, console};
    OpenAIClient openAI{model.url(), defaults, console, clock};
    PromptServer promptServer{{}, builtInTemplates()};
    PromptService prompts{
        {promptServer.url(), {}}, folder.filePath(QStringLiteral("prompt-cache.json")), console, clock};
    AnalyzerLog log{folder.filePath(QStringLiteral("data")), console, clock};
    PreviewCopies previews{folder.filePath(QStringLiteral("data/OpenAI_Previews"))};
    RecordingNotifications notificationCenter;
    NotificationManager notifications{notificationCenter, console};
    ProcessedFilesManifest manifest{folder.filePath(QStringLiteral("manifest/processed_files.json")), threads,
                                    clock, console, events};
    CaptionTurns turns;
    AnalyzerParts parts = partsWith(turns, claims);
    Analyzer analyzer{parts};
    QList<ImageReport> reports;
};

} // namespace ostrelle
