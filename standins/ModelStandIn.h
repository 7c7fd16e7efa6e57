// SPDX-License-Identifier: GPL-3.0-or-later
#pragma once

#include "standins/HttpRequestReader.h"
#include "standins/StandInCompletion.h"

#include <QByteArray>
#include <QJsonObject>
#include <QList>
#include <QObject>
#include <QPair>
#include <QUrl>
#include <chrono>
#include <optional>
#include <utility>

class QTcpServer;
class QTcpSocket;

namespace ostrelle {

/// An answer that a test uses instead of the stand-in's own.
struct StandInAnswer {
    enum class Delivery {
        whole,
        held,   ///< until sendHeld() or releaseHeld(): slow, dripping, or never
        cutOff, ///< the connection is closed after half of the body
        reset,  ///< the connection is reset without a byte of answer
    };

    int status = 200;
    QByteArray body = {};
    QList<QPair<QByteArray, QByteArray>> headers = {}; ///< in addition to server, content type and length
    Delivery delivery = Delivery::whole;
};

/// A stand-in for the model service: an HTTP server on the loopback interface that checks each request as
/// strictly as the real service and answers in its form. It is not a model, sees no picture and hears no
/// sound: its captions only repeat the facts in the prompt, and say so, as does its header "Server".
///
/// It lives on the thread that makes it, which needs an event loop.
class ModelStandIn : public QObject {
public:
    /// Listens on a free port and serves only requests with this key. Throws Error when it cannot listen.
    explicit ModelStandIn(QByteArray apiKey);

    /// Scheme, address and port.
    QUrl url() const;
    /// All complete requests so far, including refused ones.
    const QList<HttpRequest>& requests() const { return m_requests; }
    /// The body of the last request as JSON.
    QJsonObject lastJson() const;

    /// Answers the next request that passes the checks with this. Several queue up.
    void enqueue(StandInAnswer answer) { m_answers.append(std::move(answer)); }
    /// Uses this form for its own answers to batches from now on.
    void setBatchForm(BatchForm form) { m_batchForm = form; }
    /// Answers every n-th request that passes the checks with this status from now on; 0: none.
    void failEvery(qsizetype period, int status);
    /// How long the model takes to answer. For measurements only: tests do not need it.
    void setDelay(std::chrono::milliseconds delay) { m_delay = delay; }
    /// Whether requests() keeps the bodies too, which are large.
    void setKeepsBodies(bool keeps) { m_keepsBodies = keeps; }

    /// True while an answer is held.
    bool isHolding() const;
    /// Sends the next bytes of all held answers.
    void sendHeld(qsizetype count);
    /// Sends the rest of all held answers.
    void releaseHeld();

private:
    class Connection;

    void accept();
    StandInAnswer answer(const HttpRequest& request);
    void checkHead(const HttpRequest& request) const;
    /// The body of the answer to a valid request. Throws ApiFault for an invalid one.
    QByteArray ownAnswer(const HttpRequest& request) const;
    StandInAnswer replaced(QByteArray ownBody);

    QByteArray m_apiKey;
    QTcpServer* m_server;
    QList<Connection*> m_connections;
    QList<HttpRequest> m_requests;
    QList<StandInAnswer> m_answers;
    BatchForm m_batchForm = BatchForm::list;
    qsizetype m_failurePeriod = 0;
    int m_failureStatus = 0;
    qsizetype m_sinceFailure = 0;
    std::chrono::milliseconds m_delay{0};
    bool m_keepsBodies = true;
};

} // namespace ostrelle
