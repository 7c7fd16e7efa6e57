// SPDX-License-Identifier: GPL-3.0-or-later
#include "promptserver/PromptServer.h"

#include "core/Error.h"
#include "core/Iso8601.h"
#include "platform/SystemClock.h"
#include "promptserver/PromptRequest.h"
#include "promptserver/TemplateMaker.h"

#include <httplib.h>
#include <sys/socket.h>

#include <QByteArray>
#include <QJsonDocument>
#include <QRandomGenerator>
#include <array>
#include <chrono>
#include <exception>
#include <future>
#include <thread>
#include <utility>

namespace ostrelle {

using namespace Qt::StringLiterals;

namespace {

constexpr int httpBadRequest = 400;
constexpr int httpUnauthorized = 401;
constexpr int httpNotFound = 404;
constexpr int httpServerError = 500;

void answerWithSentence(httplib::Response& response, int status, const QString& sentence) {
    response.status = status;
    response.set_content(sentence.toStdString(), "text/plain; charset=utf-8");
}

/// Takes the same time however much of the key is right.
bool isSame(const std::string& given, const std::string& expected) {
    std::size_t difference = given.size() ^ expected.size();
    for (std::size_t at = 0; at < given.size() && !expected.empty(); ++at) {
        difference |= static_cast<unsigned char>(given[at] ^ expected[at % expected.size()]);
    }
    return difference == 0;
}

RequestParameters parametersOf(const httplib::Request& request) {
    return [&request](const QString& name) {
        QStringList values;
        const auto [first, last] = request.params.equal_range(name.toStdString());
        for (auto value = first; value != last; ++value) {
            values.append(QString::fromStdString(value->second));
        }
        return values;
    };
}

QByteArray responseBody(const PromptQuery& query, const QJsonObject& templates) {
    const QJsonObject metadata{{u"fetchedAt"_s, formatIso8601(SystemClock().now())},
                               {u"cacheKey"_s, cacheKey(query)}};
    const QJsonObject response{{u"version"_s, query.version},
                               {u"style"_s, rawValue(query.style)},
                               {u"sport"_s, rawValue(query.sport)},
                               {u"templates"_s, templates},
                               {u"metadata"_s, metadata}};
    return QJsonDocument(response).toJson(QJsonDocument::Compact);
}

} // namespace

TemplateSource builtInTemplates() {
    return [library = PromptLibrary()](const PromptQuery& query) { return makeTemplates(query, library); };
}

class PromptServer::Service {
public:
    Service(const PromptServerOptions& options, TemplateSource source)
        : m_options(options), m_source(std::move(source)) {
        m_server.set_socket_options([this](socket_t socket) { ownThePort(socket); });
        // Open connections delay the server's end: no keep-alive, and no idling.
        m_server.set_keep_alive_max_count(1);
        m_server.set_keep_alive_timeout(1);
        m_server.set_read_timeout(1);
        m_server.set_write_timeout(1);
        m_server.set_pre_routing_handler(
            [this](const httplib::Request& request, httplib::Response& response) {
                answer(request, response);
                return httplib::Server::HandlerResponse::Handled;
            });
        listen();
    }

    ~Service() {
        m_server.stop();
        m_thread.join();
    }

    QUrl url() const {
        QUrl url;
        url.setScheme(u"http"_s);
        url.setHost(m_options.address);
        url.setPort(m_port);
        return url;
    }

private:
    /// By default, the library lets several programs share a port and so take each other's requests.
    void ownThePort(socket_t socket) {
        const int yes = 1;
        ::setsockopt(socket, SOL_SOCKET, SO_REUSEADDR, &yes, sizeof yes);
        m_socket = socket;
    }

    void listen() {
        const std::string address = m_options.address.toStdString();
        m_port = m_options.port;
        if (m_port == 0) {
            m_port = m_server.bind_to_any_port(address);
        } else if (!m_server.bind_to_port(address, m_port)) {
            m_port = -1;
        }
        if (m_port < 0) {
            throw Error(u"The prompt server cannot listen on %1, port %2."_s.arg(m_options.address)
                            .arg(m_options.port));
        }
        // The library's backlog is five connections; one more, and its client retries after a second.
        ::listen(m_socket, SOMAXCONN);
        std::promise<void> ended;
        const std::future<void> end = ended.get_future();
        m_thread = std::thread([this, promise = std::move(ended)]() mutable {
            m_server.listen_after_bind();
            promise.set_value();
        });
        // A server that is not running yet cannot be stopped.
        while (!m_server.is_running() &&
               end.wait_for(std::chrono::milliseconds(1)) != std::future_status::ready) {
        }
    }

    void answer(const httplib::Request& request, httplib::Response& response) const {
        if (request.path != "/api/prompt" || request.method != "GET") {
            answerWithSentence(response, httpNotFound, u"There is nothing here but GET /api/prompt."_s);
        } else if (!m_options.apiKey.isEmpty() &&
                   !isSame(request.get_header_value("X-API-Key"), m_options.apiKey.toStdString())) {
            answerWithSentence(response, httpUnauthorized, u"The header X-API-Key does not hold the key."_s);
        } else {
            answerPrompt(request, response);
        }
    }

    void answerPrompt(const httplib::Request& request, httplib::Response& response) const {
        PromptQuery query;
        try {
            query = promptQuery(parametersOf(request));
        } catch (const Error& error) {
            answerWithSentence(response, httpBadRequest, error.localizedDescription());
            return;
        }
        try {
            const QByteArray body = responseBody(query, m_source(query));
            response.set_content(body.toStdString(), "application/json");
        } catch (const std::exception& error) {
            answerWithSentence(response, httpServerError, describe(error));
        }
    }

    const PromptServerOptions m_options;
    const TemplateSource m_source;
    httplib::Server m_server;
    socket_t m_socket = -1; ///< the server's
    int m_port = -1;
    std::thread m_thread;
};

QString randomPromptKey() {
    std::array<quint32, 8> words{};
    QRandomGenerator::system()->fillRange(words.data(), words.size());
    const auto bytes = QByteArray::fromRawData(reinterpret_cast<const char*>(words.data()), sizeof words);
    return QString::fromLatin1(bytes.toHex());
}

PromptServer::PromptServer(PromptServerOptions options, TemplateSource source)
    : m_service(std::make_unique<Service>(options, std::move(source))) {}

PromptServer::~PromptServer() = default;

QUrl PromptServer::url() const {
    return m_service->url();
}

} // namespace ostrelle
