// SPDX-License-Identifier: GPL-3.0-or-later
#include "transfer/ftp/StreamReader.h"

#include "transfer/ftp/FTPError.h"

#include <chrono>
#include <utility>

namespace ostrelle {

using namespace Qt::StringLiterals;
using Status = FtpStream::Status;

namespace {

constexpr std::chrono::milliseconds patience{50};

bool isOver(Status status) {
    return status == Status::closed || status == Status::error;
}

} // namespace

StreamReader::StreamReader(const FtpParts& parts, FtpAddress address)
    : m_parts(parts), m_address(std::move(address)) {}

void StreamReader::requireWanted() const {
    if (*m_parts.isAbandoned) {
        throw FTPError(FTPError::Case::readError, u"The program is closing."_s);
    }
}

void StreamReader::create() {
    requireWanted();
    const std::optional<QString> shown = m_address.shown();
    if (!shown) {
        throw FTPError(FTPError::Case::invalidURL,
                       m_address.path.startsWith(u'/')
                           ? u"The server's name or port cannot be used."_s
                           : u"The folder on the server must begin with a slash."_s);
    }
    m_shownAddress = *shown;
    m_stream = m_parts.makeStream(m_address);
    if (!m_stream || m_stream->status() == Status::error) {
        throw FTPError(FTPError::Case::cannotCreateStream);
    }
}

QCoro::Task<> StreamReader::open() {
    constexpr int mostChecks = 50;
    constexpr std::chrono::milliseconds interval{100};
    if (!m_stream->open()) {
        print(u"Failed to open stream, status: "_s + QString::number(static_cast<int>(m_stream->status())));
        throw FTPError(FTPError::Case::cannotOpenStream, m_stream->failure());
    }
    for (int check = 0; check < mostChecks; ++check) {
        requireWanted();
        const Status status = m_stream->status();
        if (status == Status::open || status == Status::reading) {
            break;
        }
        if (isOver(status)) {
            const QString reason = m_stream->failure();
            m_stream->close();
            throw FTPError(FTPError::Case::cannotOpenStream, reason);
        }
        co_await await(interval);
    }
    m_buffer.resize(mostBytes);
    m_turn.restart();
    m_sinceBytes.start();
}

QCoro::Task<StreamReader::Pass> StreamReader::pass() {
    constexpr int mostEmptyReads = 10;
    m_got = 0;
    requireWanted();
    if (!m_stream->hasBytesAvailable()) {
        const Status status = m_stream->status();
        if (isOver(status)) {
            print(u"Stream error or closed, status: "_s + QString::number(static_cast<int>(status)));
            co_return Pass::end;
        }
        if (status == Status::atEnd) {
            print(u"Stream reached end"_s);
            co_return Pass::end;
        }
        QElapsedTimer waiting;
        waiting.start();
        const bool hasNews = co_await await(patience);
        m_waited += hasNews ? std::chrono::milliseconds(waiting.elapsed()) : patience;
        co_return Pass::nothing;
    }
    const qint64 got = m_stream->read(m_buffer.data(), mostBytes);
    if (got < 0) {
        print(u"Read error: "_s + QString::number(got));
        const QString reason = m_stream->failure();
        m_stream->close();
        throw FTPError(FTPError::Case::readError, reason);
    }
    if (got == 0) {
        if (++m_emptyReads < mostEmptyReads) {
            co_return Pass::nothing;
        }
        print(u"No more data available"_s);
        co_return Pass::end;
    }
    m_emptyReads = 0;
    m_got = got;
    m_bytesRead += got;
    m_sinceBytes.start();
    if (m_turn.isLong()) { // reading on and on would hold up the event loop
        co_await m_turn.giveWay();
    }
    co_return Pass::bytes;
}

/// Ends early when the stream has something new, so that a fast server is not slowed down. False if it has
/// not.
QCoro::Task<bool> StreamReader::await(std::chrono::milliseconds longest) {
    const Event news = m_stream->news();
    const auto isOver = std::make_shared<bool>(false);
    const auto timer = m_parts.clock.after(longest, [news, isOver] {
        *isOver = !news.hasHappened();
        news.happen();
    });
    co_await news.happened();
    m_turn.restart();
    co_return !*isOver;
}

qint64 StreamReader::spentPasses() const {
    return m_bytesRead / mostBytes + m_waited / patience;
}

void StreamReader::print(const QString& words) {
    m_parts.log.print(u"[FTPClient] "_s + words);
}

} // namespace ostrelle
