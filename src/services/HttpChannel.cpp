// SPDX-License-Identifier: GPL-3.0-or-later
#include "services/HttpChannel.h"

#include "platform/SendQueue.h"
#include "services/TransportError.h"

#include <QNetworkAccessManager>
#include <QNetworkReply>
#include <algorithm>
#include <coroutine>
#include <utility>

namespace ostrelle {

using namespace Qt::StringLiterals;

namespace {

/// A reply resumes its waiter inside its own signal, and still needs itself afterwards.
struct DeleteLater {
    void operator()(QNetworkReply* reply) const { reply->deleteLater(); }
};
using ReplyPointer = std::unique_ptr<QNetworkReply, DeleteLater>;

/// A request body that can be sent only once. Qt resends a request unasked when the connection ends before
/// the answer, but by then the service may have done, and charged for, the work.
class OneTimeBody : public QIODevice {
public:
    explicit OneTimeBody(QByteArray bytes) : m_bytes(std::move(bytes)) { open(ReadOnly | Unbuffered); }
    qint64 size() const override { return m_bytes.size(); }
    bool seek(qint64 position) override { return position == m_sent; }

protected:
    qint64 readData(char* target, qint64 capacity) override {
        const qint64 count = std::min(capacity, m_bytes.size() - m_sent);
        std::copy_n(m_bytes.constData() + m_sent, count, target);
        m_sent += count;
        return count;
    }
    qint64 writeData(const char*, qint64) override { return -1; }

private:
    QByteArray m_bytes;
    qint64 m_sent = 0;
};

/// True for the errors Qt reports for a complete reply with an error status. The status alone is not enough:
/// a reply cut off by a broken connection has one too.
bool isErrorOfStatus(QNetworkReply::NetworkError error, int status) {
    const bool isOfContentOrServer =
        error >= QNetworkReply::ContentAccessDenied && error != QNetworkReply::ProtocolFailure;
    return status >= 400 && (isOfContentOrServer || error == QNetworkReply::ProxyAuthenticationRequiredError);
}

/// Calls a function when an exchange makes no progress for a while, or takes too long overall.
class Patience : public QObject {
public:
    Patience(Clock& clock, QNetworkReply* reply, std::chrono::milliseconds idle, std::function<void()> end)
        : m_clock(clock)
        , m_idle(idle)
        , m_end(std::move(end))
        , m_peerPort(reply->url().port(reply->url().scheme() == u"https" ? 443 : 80))
        , m_wholeTimer(clock.after(HttpChannel::deadline, m_end)) {
        connect(reply, &QNetworkReply::uploadProgress, this, &Patience::beginAnew);
        connect(reply, &QNetworkReply::readyRead, this, &Patience::beginAnew);
        connect(reply, &QNetworkReply::metaDataChanged, this, [this] {
            m_uploadTimer.reset();
            beginAnew();
        });
        m_uploadTimer = clock.every(std::chrono::seconds(5), [this] { lookAtUpload(); });
        beginAnew();
    }

private:
    void beginAnew() { m_idleTimer = m_clock.after(m_idle, m_end); }

    /// Qt's progress counts what the system has buffered, usually everything at once.
    void lookAtUpload() {
        const qint64 before = std::exchange(m_unacknowledged, unacknowledgedBytes(m_peerPort));
        if (m_unacknowledged < before) {
            beginAnew();
        }
    }

    Clock& m_clock;
    std::chrono::milliseconds m_idle;
    std::function<void()> m_end;
    int m_peerPort;
    qint64 m_unacknowledged = 0; ///< at the last look; includes other uploads to the same service
    std::unique_ptr<Timer> m_wholeTimer;
    std::unique_ptr<Timer> m_uploadTimer;
    std::unique_ptr<Timer> m_idleTimer;
};

/// Awaits the end of a reply and resumes inside its signal. Later versions of QCoro resume by an event, when
/// the reply may have gone with its channel.
struct Finished {
    QNetworkReply* reply;

    bool await_ready() const { return reply->isFinished(); }
    void await_suspend(std::coroutine_handle<> waiter) const {
        QObject::connect(reply, &QNetworkReply::finished, reply, [waiter] { waiter.resume(); });
    }
    void await_resume() const {}
};

/// Collects a reply's body as it arrives, and ends the reply when it is too large or too slow.
class Reception : public QObject {
public:
    explicit Reception(QNetworkReply* reply) : m_reply(reply) {
        m_reply->setReadBufferSize(qint64{64} *
                                   1024); // the network thread waits for us rather than pile up bytes
        connect(m_reply, &QNetworkReply::readyRead, this, &Reception::takeIn);
    }

    void timeOut() {
        m_timedOut = true;
        endReply();
    }

    HttpReply finish() {
        if (m_reply->bytesAvailable() > 0) {
            takeIn();
        }
        if (m_tooLarge) {
            throw TransportError::tooLarge(HttpChannel::largestReply);
        }
        const int status = m_reply->attribute(QNetworkRequest::HttpStatusCodeAttribute).toInt();
        throwIfIncomplete(status);
        return {.status = status < 100 ? std::nullopt : std::optional(status), .body = m_body};
    }

private:
    void takeIn() {
        m_body += m_reply->readAll();
        if (m_body.size() > HttpChannel::largestReply) {
            m_body.clear();
            m_tooLarge = true;
            endReply();
        }
    }

    /// abort() called here would resume the waiter, which owns us and the timer, inside our own call.
    void endReply() { QMetaObject::invokeMethod(m_reply, "abort", Qt::QueuedConnection); }

    void throwIfIncomplete(int status) const {
        const QNetworkReply::NetworkError error = m_reply->error();
        if (error == QNetworkReply::OperationCanceledError && m_timedOut) {
            throw TransportError::timedOut();
        }
        if (error == QNetworkReply::ContentReSendError) { // see OneTimeBody
            throw TransportError(QNetworkReply::RemoteHostClosedError, u"The connection was closed."_s);
        }
        if (error != QNetworkReply::NoError && !isErrorOfStatus(error, status)) {
            throw TransportError(error, m_reply->errorString());
        }
    }

    QNetworkReply* m_reply;
    QByteArray m_body;
    bool m_timedOut = false;
    bool m_tooLarge = false;
};

void makeStateless(QNetworkRequest& request) {
    using Request = QNetworkRequest;
    request.setAttribute(Request::RedirectPolicyAttribute, Request::ManualRedirectPolicy);
    request.setAttribute(Request::CookieLoadControlAttribute, Request::Manual);
    request.setAttribute(Request::CookieSaveControlAttribute, Request::Manual);
    request.setAttribute(Request::AuthenticationReuseAttribute, Request::Manual);
    request.setHeader(Request::UserAgentHeader, u"OstrelleCaptions"_s);
    // Replies are short, and a compressed one could expand to any size.
    request.setRawHeader("Accept-Encoding", "identity");
}

} // namespace

HttpChannel::HttpChannel(Clock& clock)
    : m_clock(clock), m_manager(std::make_unique<QNetworkAccessManager>()) {}

HttpChannel::~HttpChannel() {
    // A waiter would hang if its reply were simply deleted. Without the manager, a woken task cannot start
    // another request.
    m_gate.close();
    const std::unique_ptr<QNetworkAccessManager> manager = std::move(m_manager);
    const auto replies = manager->findChildren<QNetworkReply*>();
    for (QNetworkReply* reply : replies) {
        reply->abort();
    }
}

QCoro::Task<HttpReply> HttpChannel::post(const QNetworkRequest& request, QByteArray body,
                                         std::chrono::milliseconds idle) {
    return exchange(request, idle,
                    [body = std::move(body)](QNetworkAccessManager& manager, const QNetworkRequest& toSend) {
                        auto upload = std::make_unique<OneTimeBody>(body);
                        QNetworkReply* reply = manager.post(toSend, upload.get());
                        upload.release()->setParent(reply); // which reads from it to the end of its life
                        return reply;
                    });
}

QCoro::Task<HttpReply> HttpChannel::get(const QNetworkRequest& request, std::chrono::milliseconds idle) {
    return exchange(request, idle, [](QNetworkAccessManager& manager, const QNetworkRequest& toSend) {
        return manager.get(toSend);
    });
}

QCoro::Task<HttpReply> HttpChannel::exchange(QNetworkRequest request, std::chrono::milliseconds idle,
                                             Send send) {
    const auto pass = co_await m_gate.enter();
    if (!pass) { // the channel is gone, or about to be
        throw TransportError::closing();
    }
    makeStateless(request);
    const ReplyPointer reply(send(*m_manager, request));
    Reception reception(reply.get());
    const Patience patience(m_clock, reply.get(), idle, [&reception] { reception.timeOut(); });
    co_await Finished{reply.get()};
    co_return reception.finish();
}

} // namespace ostrelle
