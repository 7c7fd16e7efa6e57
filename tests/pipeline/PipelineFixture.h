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
#include "support/RecordingLog.h"
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
    std::optional<QString> caption() const { return captionOf(folder.filePath(QStringLiteral("IMG_1.DNG"))); }
    /// The caption of an image in any folder.
    static std::optional<QString> captionOf(const QString& image) {
        return ImageMetadata(image).read(QTimeZone::utc()).facts.caption;
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
    QStringList logFile() const {
        return QString::fromUtf8(read(QStringLiteral("data/Analyzer.log"))).split(u'\n', Qt::SkipEmptyParts);
    }
    bool hasLogged(const QString& words) const { return logFile().filter(words).size() == 1; }

    QList<ImageOutcome> reports;
};

} // namespace ostrelle
