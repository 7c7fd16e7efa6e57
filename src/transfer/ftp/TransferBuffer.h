// SPDX-License-Identifier: GPL-3.0-or-later
#pragma once

#include "core/Event.h"
#include "transfer/ftp/ByteRing.h"
#include "transfer/ftp/FtpStream.h"

#include <QByteArrayView>
#include <QString>
#include <condition_variable>
#include <mutex>

namespace ostrelle {

/// What a transfer's worker thread and the thread of the event loop share: the bytes under way, and how the
/// transfer stands. No call but write() waits.
class TransferBuffer {
public:
    /// In bytes. The worker thread waits when it is full, and the server with it.
    static constexpr std::size_t capacity = 4 << 20;

    // For the worker thread.

    /// The server has begun to send.
    void markOpen();
    /// Waits for room. False once nobody wants the bytes any more.
    bool write(QByteArrayView bytes);
    bool isAbandoned() const;
    /// The transfer is over; `failure` is a sentence, empty after a success.
    void finish(const QString& failure, const FtpServerFacts& facts = {});

    // For the thread of the event loop.

    FtpStream::Status status() const;
    bool hasBytes() const;
    qint64 read(char* buffer, qint64 size);
    /// Nobody wants further bytes.
    void abandon();
    /// Has happened already if there is something to read or to see.
    Event news();
    QString failure() const;
    FtpServerFacts facts() const;

private:
    void tell();

    mutable std::mutex m_mutex;
    std::condition_variable m_room;
    ByteRing m_bytes{capacity};
    bool m_isOpen = false;
    mutable bool m_wasSeenOpen = false; ///< an empty file must show as open before it ends
    bool m_isFinished = false;
    bool m_isAbandoned = false;
    QString m_failure;
    FtpServerFacts m_facts;
    Event m_news;
};

} // namespace ostrelle
