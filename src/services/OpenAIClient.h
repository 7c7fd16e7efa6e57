// SPDX-License-Identifier: GPL-3.0-or-later
#pragma once

#include "platform/Clock.h"
#include "platform/DefaultsStore.h"
#include "platform/PlainLog.h"
#include "services/BatchCaptions.h"
#include "services/ChatResponse.h"
#include "services/HttpChannel.h"

#include <QByteArray>
#include <QCoroTask>
#include <QList>
#include <QString>
#include <QStringList>
#include <QThreadPool>
#include <QUrl>
#include <memory>
#include <optional>

namespace ostrelle {

/// A caption and its cost, if the service reported one.
struct CaptionReply {
    QString text;
    std::optional<Usage> usage;
};

/// What the service says of a key.
struct KeyVerdict {
    enum class Kind { accepted, refused, unknown };

    Kind kind = Kind::unknown;
    QString reason = {}; ///< why it is not known, a sentence
};

/// The program's connection to the model service. Keeps no state and never retries; reads the API key anew
/// for each call. Destroying it fails the calls in flight with a TransportError.
class OpenAIClient {
public:
    /// `modelUrl` is the service's scheme and host. All references must outlive the client.
    OpenAIClient(QUrl modelUrl, const DefaultsStore& defaults, PlainLog& log, Clock& clock);

    /// Requests a caption for one picture. Throws OpenAIError, or TransportError when no complete reply came;
    /// see HttpChannel for the time-outs.
    QCoro::Task<CaptionReply> generateCaption(QByteArray jpeg, QString prompt, QString model,
                                              int maximumTokens, double temperature);

    /// Requests captions for several pictures in one request, or for a single one as generateCaption() does.
    /// Returns all of them, or throws as generateCaption() does.
    QCoro::Task<BatchCaptionReply> generateBatchCaptions(QList<BatchImageItem> images, QString prompt,
                                                         QString model, int maximumTokens,
                                                         double temperature);

    /// Transcribes the audio file; the text is untrimmed and may be empty. Throws FileError when the file
    /// cannot be read, otherwise as generateCaption(). Reads the file on one of the reader's threads.
    QCoro::Task<QString> transcribeAudio(QString file, QThreadPool* reader = QThreadPool::globalInstance());

    /// Whether the service accepts the stored key, without sending anything else. Never throws.
    QCoro::Task<KeyVerdict> judgeKey();

private:
    /// The start of the log lines about a reply that holds no answer.
    struct ReplyLines {
        QString status;
        QString undecodable;
    };

    QCoro::Task<HttpReply> askForModels();
    QString requiredKey() const;
    QNetworkRequest request(const QString& path, const QString& key, const QByteArray& contentType) const;
    template <typename Answer>
    Answer decoded(const HttpReply& reply, const QString& key, const ReplyLines& lines,
                   Answer (*decode)(const QByteArray&));
    void throwUnlessSuccess(const HttpReply& reply, const QString& key, const QString& line);
    CaptionReply captionReply(const ChatResponse& response);
    BatchCaptionReply batchReply(const ChatResponse& response, const QString& key,
                                 const QStringList& fileNames);
    QList<BatchCaptionResult> captionsIn(const QString& text, const QStringList& fileNames,
                                         const QString& key);
    void printPicture(const QByteArray& jpeg);
    void printUsage(const QString& line, const Usage& usage);

    QUrl m_modelUrl;
    const DefaultsStore& m_defaults;
    PlainLog& m_log;
    // Lets a resumed call see that we are gone. Outlives the channel, whose end wakes the calls in flight.
    std::shared_ptr<const bool> m_life = std::make_shared<const bool>(true);
    HttpChannel m_channel;
};

} // namespace ostrelle
