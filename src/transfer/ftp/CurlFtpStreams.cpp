// SPDX-License-Identifier: GPL-3.0-or-later
#include "transfer/ftp/CurlFtpStreams.h"

#include "transfer/ftp/CurlFailure.h"
#include "transfer/ftp/TransferBuffer.h"

#include <curl/curl.h>

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

std::size_t takeBytes(const char* bytes, std::size_t size, std::size_t count, void* buffer) {
    const QByteArrayView view(bytes, static_cast<qsizetype>(size * count));
    return static_cast<TransferBuffer*>(buffer)->write(view) ? size * count : CURL_WRITEFUNC_ERROR;
}

/// The server's replies: 150 or 125 comes before the bytes.
std::size_t takeReply(const char* bytes, std::size_t size, std::size_t count, void* buffer) {
    const QByteArrayView reply(bytes, static_cast<qsizetype>(size * count));
    if (reply.startsWith("150") || reply.startsWith("125")) {
        static_cast<TransferBuffer*>(buffer)->markOpen();
    }
    return size * count;
}

int checkInterest(void* buffer, curl_off_t, curl_off_t, curl_off_t, curl_off_t) {
    return static_cast<TransferBuffer*>(buffer)->isAbandoned() ? 1 : 0;
}

/// What one transfer asks of the library.
void configure(CURL* handle, const FtpAddress& address, TransferBuffer* buffer, const curl_slist* commands) {
    // Seconds; a listing that nobody answers must fail before its reader takes it for an empty one.
    const long longestSilence = address.path.endsWith(QLatin1Char('/')) ? 45 : 60;
    constexpr long bufferSize = 256 << 10;
    curl_easy_reset(handle); // keeps the connections
    curl_easy_setopt(handle, CURLOPT_URL, address.location().constData());
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
    curl_easy_setopt(handle, CURLOPT_WRITEDATA, buffer);
    curl_easy_setopt(handle, CURLOPT_HEADERFUNCTION, takeReply);
    curl_easy_setopt(handle, CURLOPT_HEADERDATA, buffer);
    curl_easy_setopt(handle, CURLOPT_XFERINFOFUNCTION, checkInterest);
    curl_easy_setopt(handle, CURLOPT_XFERINFODATA, buffer);
    curl_easy_setopt(handle, CURLOPT_NOPROGRESS, 0L);
}

} // namespace

/// The library's handles that nobody uses at the moment; each keeps its connection.
class CurlConnections {
public:
    Handle take() {
        const std::lock_guard lock(m_mutex);
        if (m_idle.empty()) {
            return Handle(curl_easy_init());
        }
        Handle handle = std::move(m_idle.back());
        m_idle.pop_back();
        return handle;
    }
    /// Cleaning up waits for the server to answer a QUIT, so this is for worker threads.
    void putBack(Handle handle) {
        constexpr std::size_t mostIdle = 2;
        const std::lock_guard lock(m_mutex);
        if (!m_isClosed && m_idle.size() < mostIdle) {
            m_idle.push_back(std::move(handle));
        }
    }
    void close() {
        const std::lock_guard lock(m_mutex);
        m_isClosed = true;
        for (Handle& handle : m_idle) {
            std::thread([handle = std::move(handle)]() mutable { handle.reset(); }).detach();
        }
        m_idle.clear();
    }

private:
    std::mutex m_mutex;
    std::vector<Handle> m_idle;
    bool m_isClosed = false;
};

namespace {

void transfer(const FtpAddress& address, const std::shared_ptr<TransferBuffer>& buffer,
              const std::shared_ptr<CurlConnections>& connections) {
    Handle handle = connections->take();
    if (!handle) {
        buffer->finish(curlFailure(CURLE_OUT_OF_MEMORY, 0));
        return;
    }
    // Not every server knows the command, hence the asterisk.
    const CommandList commands(curl_slist_append(nullptr, "*OPTS UTF8 ON"));
    configure(handle.get(), address, buffer.get(), commands.get());
    const CURLcode result = curl_easy_perform(handle.get());
    long reply = 0;
    curl_easy_getinfo(handle.get(), CURLINFO_RESPONSE_CODE, &reply);
    buffer->finish(curlFailure(result, reply));
    if (result == CURLE_OK) {
        connections->putBack(std::move(handle));
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

private:
    FtpAddress m_address;
    std::shared_ptr<CurlConnections> m_connections;
    std::shared_ptr<TransferBuffer> m_buffer = std::make_shared<TransferBuffer>();
    bool m_isOpened = false;
};

} // namespace

CurlFtpStreams::CurlFtpStreams() : m_connections(std::make_shared<CurlConnections>()) {
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
