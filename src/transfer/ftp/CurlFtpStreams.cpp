// SPDX-License-Identifier: GPL-3.0-or-later
#include "transfer/ftp/CurlFtpStreams.h"

#include "transfer/ftp/CertificateCheck.h"
#include "transfer/ftp/CurlFailure.h"
#include "transfer/ftp/FTPListing.h"
#include "transfer/ftp/TransferBuffer.h"

#include <curl/curl.h>
#include <openssl/crypto.h>

#include <algorithm>
#include <mutex>
#include <thread>
#include <utility>
#include <vector>

namespace ostrelle {

namespace {

struct CleanUp {
    void operator()(CURL* handle) const { curl_easy_cleanup(handle); }
};
using Handle = std::unique_ptr<CURL, CleanUp>;

struct FreeList {
    void operator()(curl_slist* list) const { curl_slist_free_all(list); }
};
using CommandList = std::unique_ptr<curl_slist, FreeList>;

/// A transfer under way, for the library's callbacks.
struct Transfer {
    const FtpAddress& address;
    TransferBuffer* buffer;
    FtpServerFacts facts = {};
    QByteArray refusal = {}; ///< the latest reply that was one, a line
    bool hasBytes = false;
    bool agreesToTls = false;
};

std::size_t takeBytes(const char* bytes, std::size_t size, std::size_t count, void* transfer) {
    const QByteArrayView view(bytes, static_cast<qsizetype>(size * count));
    auto& own = *static_cast<Transfer*>(transfer);
    own.hasBytes = true;
    return own.buffer->write(view) ? size * count : CURL_WRITEFUNC_ERROR;
}

/// The lines of the server's replies: 150 or 125 comes before the bytes, 234 before TLS (RFC 4217).
std::size_t takeReply(const char* bytes, std::size_t size, std::size_t count, void* transfer) {
    const QByteArrayView reply(bytes, static_cast<qsizetype>(size * count));
    auto& own = *static_cast<Transfer*>(transfer);
    own.facts.isAnswering = true;
    if (reply.startsWith("150") || reply.startsWith("125")) {
        own.buffer->markOpen();
    }
    own.facts.isEncrypted = own.facts.isEncrypted || own.agreesToTls; // it answers after its handshake
    own.agreesToTls = own.agreesToTls || reply.startsWith("234");
    const bool isRefusal = reply.startsWith('4') || reply.startsWith('5');
    own.refusal = isRefusal ? reply.toByteArray() : QByteArray();
    return size * count;
}

int checkInterest(void* buffer, curl_off_t, curl_off_t, curl_off_t, curl_off_t) {
    return static_cast<TransferBuffer*>(buffer)->isAbandoned() ? 1 : 0;
}

/// What one transfer asks of the library.
void configure(CURL* handle, Transfer* transfer, const curl_slist* commands) {
    const FtpAddress& address = transfer->address;
    // Seconds; a listing that nobody answers must fail before its reader takes it for an empty one.
    const long longestSilence = address.path.endsWith(QLatin1Char('/')) ? 45 : 60;
    constexpr long bufferSize = 256 << 10;
    curl_easy_reset(handle); // keeps the connections
    curl_easy_setopt(handle, CURLOPT_URL, address.location(FtpAddress::Root::login).constData());
    curl_easy_setopt(handle, CURLOPT_USERNAME, address.username.toUtf8().constData());
    curl_easy_setopt(handle, CURLOPT_PASSWORD, address.password.toUtf8().constData());
    curl_easy_setopt(handle, CURLOPT_PROTOCOLS_STR, "ftp");
    curl_easy_setopt(handle, CURLOPT_FTP_FILEMETHOD, CURLFTPMETHOD_SINGLECWD);
    curl_easy_setopt(handle, CURLOPT_FTP_SKIP_PASV_IP, 1L); // a server does not send us elsewhere
    curl_easy_setopt(handle, CURLOPT_PATH_AS_IS, 1L);
    curl_easy_setopt(handle, CURLOPT_QUOTE, commands);
    curl_easy_setopt(handle, CURLOPT_NOSIGNAL, 1L);
    curl_easy_setopt(handle, CURLOPT_QUICK_EXIT, 1L);
    curl_easy_setopt(handle, CURLOPT_CONNECTTIMEOUT, longestSilence);
    curl_easy_setopt(handle, CURLOPT_SERVER_RESPONSE_TIMEOUT, longestSilence);
    curl_easy_setopt(handle, CURLOPT_LOW_SPEED_LIMIT, 1L); // bytes a second
    curl_easy_setopt(handle, CURLOPT_LOW_SPEED_TIME, longestSilence);
    curl_easy_setopt(handle, CURLOPT_BUFFERSIZE, bufferSize);
    curl_easy_setopt(handle, CURLOPT_WRITEFUNCTION, takeBytes);
    curl_easy_setopt(handle, CURLOPT_WRITEDATA, transfer);
    curl_easy_setopt(handle, CURLOPT_HEADERFUNCTION, takeReply);
    curl_easy_setopt(handle, CURLOPT_HEADERDATA, transfer);
    curl_easy_setopt(handle, CURLOPT_XFERINFOFUNCTION, checkInterest);
    curl_easy_setopt(handle, CURLOPT_XFERINFODATA, transfer->buffer);
    curl_easy_setopt(handle, CURLOPT_NOPROGRESS, 0L);
}

} // namespace

/// One of the library's handles, which keeps its connection for the next transfer.
struct CurlConnection {
    explicit CurlConnection(FtpSecurity wanted)
        : security(std::move(wanted)), certificates(security.trustedCertificate), handle(curl_easy_init()) {}

    FtpSecurity security;
    CertificateCheck certificates; // before the handle, whose connection may ask it at any time
    Handle handle;
    bool isKept = false; ///< it has served before
};
using Connection = std::unique_ptr<CurlConnection>;

/// The connections that nobody uses at the moment.
class CurlConnections {
public:
    /// A connection that was made under other conditions of security does not count.
    Connection take(const FtpSecurity& security) {
        const std::lock_guard lock(m_mutex);
        const auto fits = [&security](const Connection& idle) { return idle->security == security; };
        const auto found = std::find_if(m_idle.begin(), m_idle.end(), fits);
        if (found == m_idle.end()) {
            return std::make_unique<CurlConnection>(security);
        }
        Connection connection = std::move(*found);
        m_idle.erase(found);
        return connection;
    }
    /// Cleaning up waits for the server to answer a QUIT, so this is for worker threads.
    void putBack(Connection connection) {
        constexpr std::size_t mostIdle = 2;
        Connection surplus; // cleaned up without the lock
        const std::lock_guard lock(m_mutex);
        if (m_isClosed) {
            return;
        }
        m_idle.push_back(std::move(connection));
        if (m_idle.size() > mostIdle) {
            surplus = std::move(m_idle.front());
            m_idle.erase(m_idle.begin());
        }
    }
    void close() {
        const std::lock_guard lock(m_mutex);
        m_isClosed = true;
        for (Connection& connection : m_idle) {
            std::thread([connection = std::move(connection)]() mutable { connection.reset(); }).detach();
        }
        m_idle.clear();
    }

private:
    std::mutex m_mutex;
    std::vector<Connection> m_idle;
    bool m_isClosed = false;
};

namespace {

/// What the server is told before each transfer. Not every server knows the command, hence the asterisk.
/// Without any, libcurl 7.88 often waits a second between EPSV and RETR on a kept connection.
CommandList firstCommands() {
    return CommandList(curl_slist_append(nullptr, "*OPTS UTF8 ON"));
}

CURLcode perform(CurlConnection& connection, Transfer& own) {
    CURL* handle = connection.handle.get();
    const CommandList commands = firstCommands();
    configure(handle, &own, commands.get());
    if (own.address.security.encryption == FtpEncryption::explicitTls) {
        connection.certificates.install(handle);
    }
    const CURLcode result = curl_easy_perform(handle);
    if (result != CURLE_REMOTE_ACCESS_DENIED) {
        return result;
    }
    // The login folder has no such folder: try from the top.
    const QByteArray location = own.address.location(FtpAddress::Root::top);
    curl_easy_setopt(handle, CURLOPT_URL, location.constData());
    return curl_easy_perform(handle);
}

/// Whether a connection that was kept may only have grown too old for the server.
bool isStale(const CurlConnection& connection, CURLcode result, const Transfer& own) {
    switch (result) {
    case CURLE_OK:
    case CURLE_REMOTE_ACCESS_DENIED:
    case CURLE_REMOTE_FILE_NOT_FOUND:
    case CURLE_FTP_COULDNT_RETR_FILE:
    case CURLE_OPERATION_TIMEDOUT:
    case CURLE_ABORTED_BY_CALLBACK:
    case CURLE_WRITE_ERROR:
        return own.refusal.startsWith("421") && connection.isKept && !own.hasBytes;
    default:
        return connection.isKept && !own.hasBytes;
    }
}

QString failureOf(const CurlConnection& connection, CURLcode result, const Transfer& own) {
    if (result == CURLE_PEER_FAILED_VERIFICATION) {
        return connection.certificates.failure();
    }
    const QString refusal = QString::fromUtf8(own.refusal); // which might repeat what it has been told
    CurlAnswer answer{.result = result, .refusal = PasswordMask(own.address.password).applied(refusal)};
    curl_easy_getinfo(connection.handle.get(), CURLINFO_RESPONSE_CODE, &answer.reply);
    curl_easy_getinfo(connection.handle.get(), CURLINFO_OS_ERRNO, &answer.systemError);
    return curlFailure(answer);
}

void transfer(const FtpAddress& address, const std::shared_ptr<TransferBuffer>& buffer,
              const std::shared_ptr<CurlConnections>& connections) {
    Connection connection = connections->take(address.security);
    if (!connection->handle) {
        buffer->finish(curlFailure({.result = CURLE_OUT_OF_MEMORY}));
        return;
    }
    Transfer own{.address = address, .buffer = buffer.get()};
    CURLcode result = perform(*connection, own);
    if (isStale(*connection, result, own)) {
        connection = std::make_unique<CurlConnection>(address.security);
        own.refusal.clear();
        result = perform(*connection, own);
    }
    if (result == CURLE_PEER_FAILED_VERIFICATION) {
        own.facts.untrustedCertificate = connection->certificates.fingerprint();
        own.facts.isEncrypted = true;
    }
    buffer->finish(failureOf(*connection, result, own), own.facts);
    if (result == CURLE_OK) {
        connection->isKept = true;
        connections->putBack(std::move(connection));
    }
}

class CurlFtpStream : public FtpStream {
public:
    CurlFtpStream(FtpAddress address, std::shared_ptr<CurlConnections> connections)
        : m_address(std::move(address)), m_connections(std::move(connections)) {}
    ~CurlFtpStream() override { m_buffer->abandon(); }

    bool open() override {
        std::thread([address = m_address, buffer = m_buffer, connections = m_connections] {
            transfer(address, buffer, connections);
        }).detach();
        m_isOpened = true;
        return true;
    }
    Status status() const override { return m_isOpened ? m_buffer->status() : Status::notOpen; }
    bool hasBytesAvailable() const override { return m_buffer->hasBytes(); }
    qint64 read(char* bytes, qint64 size) override { return m_buffer->read(bytes, size); }
    void close() override { m_buffer->abandon(); }
    Event news() override { return m_buffer->news(); }
    QString failure() const override { return m_buffer->failure(); }
    FtpServerFacts facts() const override { return m_buffer->facts(); }

private:
    FtpAddress m_address;
    std::shared_ptr<CurlConnections> m_connections;
    std::shared_ptr<TransferBuffer> m_buffer = std::make_shared<TransferBuffer>();
    bool m_isOpened = false;
};

} // namespace

CurlFtpStreams::CurlFtpStreams() : m_connections(std::make_shared<CurlConnections>()) {
    // Closing connections on their threads may outlast main().
    static const int isKeptToTheEnd = OPENSSL_init_crypto(OPENSSL_INIT_NO_ATEXIT, nullptr);
    Q_UNUSED(isKeptToTheEnd)
    static const CURLcode isReady = curl_global_init(CURL_GLOBAL_DEFAULT); // before any thread
    Q_UNUSED(isReady)
}

CurlFtpStreams::~CurlFtpStreams() {
    m_connections->close();
}

std::unique_ptr<FtpStream> CurlFtpStreams::make(const FtpAddress& address) const {
    return std::make_unique<CurlFtpStream>(address, m_connections);
}

} // namespace ostrelle
