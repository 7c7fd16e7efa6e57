// SPDX-License-Identifier: GPL-3.0-or-later
#pragma once

#include "metadata/ImageMetadata.h"
#include "pipeline/BatchRun.h"
#include "product/ApiKey.h"
#include "program/ComposedProgram.h"
#include "standins/DngBuilder.h"
#include "standins/JpegBuilder.h"
#include "standins/ModelStandIn.h"
#include "standins/SportsScene.h"
#include "support/Await.h"
#include "support/FileFacts.h"
#include "support/Unprivileged.h"

#include <gtest/gtest.h>

#include <QDir>
#include <QFile>
#include <QJsonArray>
#include <QJsonDocument>
#include <QJsonObject>

namespace ostrelle {

/// A folder, and the stand-in for the model.
struct ModelAndFolder {
    UnprivilegedFolder folder;
    ModelStandIn model{"test-key"};
};

/// The pipeline over the stand-in for the model, in a folder of its own with a roster and a key.
class PipelineTest : public testing::Test, protected ModelAndFolder, protected ComposedProgram {
protected:
    PipelineTest() : ComposedProgram(folder.path(), model.url()) {
        defaults.set(apiKeyName, QStringLiteral("test-key"));
        write(QStringLiteral("roster.txt"), "12\tSam Abel\n");
        settings.setCodeReplacementsFile(folder.filePath(QStringLiteral("roster.txt")));
        QObject::connect(&analyzer, &Analyzer::imageFinished, &analyzer,
                         [this](const ImageOutcome& image) { reports.append(image); });
        QObject::connect(&status, &StatusStore::lastMessageChanged, &status,
                         [this] { messages.append(status.lastMessage().value_or(QString())); });
    }

    /// A save under way would get in the way of the folder's removal.
    ~PipelineTest() override { await(prompts.finishPending()); }

    QString path(const QString& name) const { return folder.filePath(name); }
    QString folderWith(const QString& name) const {
        EXPECT_TRUE(QDir(folder.path()).mkpath(name));
        return path(name);
    }
    QString write(const QString& name, const QByteArray& bytes) const {
        QFile file(path(name));
        EXPECT_TRUE(file.open(QIODevice::WriteOnly) && file.write(bytes) == bytes.size());
        return file.fileName();
    }
    QByteArray read(const QString& name) const { return contentsOf(path(name)); }
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
    std::optional<QString> caption() const { return captionOf(path(QStringLiteral("IMG_1.DNG"))); }
    /// The caption of an image in any folder.
    static std::optional<QString> captionOf(const QString& image) {
        return ImageMetadata(image).read(QTimeZone::utc()).facts.caption;
    }
    /// A batch that begins at this index of a run.
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
    /// The pieces of text in the last request to the model, in order.
    QStringList texts() const {
        QStringList texts;
        for (const QJsonValue block : model.lastJson()[u"messages"][1][u"content"].toArray()) {
            if (block[u"type"] == QStringLiteral("text")) {
                texts.append(block[u"text"].toString());
            }
        }
        return texts;
    }
    /// The number of pictures and the token limit of each request to the model.
    QList<std::pair<qsizetype, int>> requestSizes() const {
        QList<std::pair<qsizetype, int>> sizes;
        for (const HttpRequest& request : model.requests()) {
            sizes.append({request.body.count("\"image_url\":{"),
                          QJsonDocument::fromJson(request.body)[u"max_tokens"].toInt()});
        }
        return sizes;
    }
    /// A reply of the model with this content.
    static StandInAnswer reply(const QString& content, bool hasUsage = true) {
        const QByteArray list = QJsonDocument(QJsonArray{content}).toJson(QJsonDocument::Compact);
        return {.body = R"({"id":"c","choices":[{"index":0,"message":{"role":"assistant","content":)" +
                        list.sliced(1).chopped(1) + "}}]" +
                        (hasUsage ? R"(,"usage":{"prompt_tokens":1000000,"completion_tokens":500000,)"
                                    R"("total_tokens":1500000}})"
                                  : "}")};
    }
    /// A reply that the model holds back for a while.
    static StandInAnswer held(const QString& content) {
        StandInAnswer answer = reply(content);
        answer.delivery = StandInAnswer::Delivery::held;
        return answer;
    }
    static StandInAnswer refusal(int httpStatus = 500) { return {.status = httpStatus, .body = "{}"}; }

    /// Runs the image to its end, then lets its progress linger and go.
    bool run(const QString& file) {
        status.setLastMessage(std::nullopt);
        const bool isDone = await(analyzer.analyzeSingle(file));
        clock.advance(CaptionProgress::usualLinger);
        return isDone;
    }
    /// Runs the task to its end, without waiting in the short breaks between the images of a run.
    template <typename T>
    T drive(QCoro::Task<T> task) {
        driveUntil([&task] { return task.isReady(); });
        return task.operator co_await().await_resume();
    }
    void driveUntil(const std::function<bool()>& condition,
                    std::chrono::milliseconds step = std::chrono::milliseconds(20)) {
        waitUntil([this, &condition, step] {
            if (!condition() && clock.waiting() > 0) {
                clock.advance(step);
            }
            return condition();
        });
    }
    QStringList logFile() const {
        return QString::fromUtf8(read(QStringLiteral("data/Analyzer.log"))).split(u'\n', Qt::SkipEmptyParts);
    }
    /// Expects the lines of the log file to begin like this, after the time.
    void expectLogged(const QStringList& beginnings) const {
        const QStringList lines = logFile().filter(QStringLiteral("Z [Analyzer] "));
        ASSERT_EQ(lines.size(), beginnings.size()) << lines.join(u'\n').toStdString();
        for (qsizetype index = 0; index < lines.size(); ++index) {
            EXPECT_TRUE(lines[index].startsWith(QStringLiteral("2024-10-26T12:00:00Z [Analyzer] ") +
                                                beginnings[index]))
                << lines[index].toStdString();
        }
    }
    bool hasLogged(const QString& words) const { return logFile().filter(words).size() == 1; }

    /// The texts of the posted notifications.
    QStringList notified() const {
        QStringList bodies;
        for (const DesktopNotification& notification : notificationCenter.posted) {
            bodies.append(notification.body);
        }
        return bodies;
    }

    RecordingWorkspace workspace;
    QList<ImageOutcome> reports;
    QStringList messages; ///< each lastMessage of the status
};

} // namespace ostrelle
