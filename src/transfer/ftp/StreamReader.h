// SPDX-License-Identifier: GPL-3.0-or-later
#pragma once

#include "core/LoopTurn.h"
#include "platform/Clock.h"
#include "platform/PlainLog.h"
#include "transfer/ftp/FtpParts.h"

#include <QByteArrayView>
#include <QCoroTask>
#include <QElapsedTimer>
#include <QString>
#include <memory>
#include <vector>

namespace ostrelle {

/// Reads a stream pass by pass and gives way to the event loop in between. Closes the stream at its end.
class StreamReader {
public:
    /// What a pass has brought.
    enum class Pass { bytes, nothing, end };
    static constexpr qsizetype mostBytes = 8192; ///< of one pass

    StreamReader(const FtpParts& parts, FtpAddress address);
    StreamReader(const StreamReader&) = delete;
    StreamReader& operator=(const StreamReader&) = delete;

    /// Throws FTPError::invalidURL or cannotCreateStream.
    void create();
    /// Opens the stream. One that takes more than five seconds may still open later. Throws
    /// FTPError::cannotOpenStream.
    QCoro::Task<> open();
    /// Waits for up to 50 ms when there are no bytes. Throws FTPError::readError.
    QCoro::Task<Pass> pass();
    /// How much has been read and waited, in passes of 8192 bytes and of 50 ms. A fast network brings a
    /// stream in small pieces, which count by their bytes.
    qint64 spentPasses() const;
    /// What the latest pass has brought, at most mostBytes.
    QByteArrayView bytes() const { return {m_buffer.data(), m_got}; }

    /// The address without its password; after create().
    const QString& shownAddress() const { return m_shownAddress; }
    /// Why the stream ended early, a sentence; empty if it did not.
    QString failure() const { return m_stream->failure(); }
    /// What the stream has told of the server; nothing before create().
    FtpServerFacts facts() const { return m_stream ? m_stream->facts() : FtpServerFacts(); }
    /// How long no byte has come. Measured apart from the computer's clock, which may be set.
    std::chrono::milliseconds silence() const { return std::chrono::milliseconds(m_sinceBytes.elapsed()); }
    /// The silence was the reader's own.
    void restartSilence() { m_sinceBytes.start(); }

private:
    void requireWanted() const;
    QCoro::Task<bool> await(std::chrono::milliseconds longest);
    void print(const QString& words);

    FtpParts m_parts;
    FtpAddress m_address;
    QString m_shownAddress;
    std::unique_ptr<FtpStream> m_stream;
    std::vector<char> m_buffer;
    qsizetype m_got = 0;
    int m_emptyReads = 0; ///< in a row
    qint64 m_bytesRead = 0;
    std::chrono::milliseconds m_waited{0};
    LoopTurn m_turn;
    QElapsedTimer m_sinceBytes;
};

} // namespace ostrelle
