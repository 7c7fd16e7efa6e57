// SPDX-License-Identifier: GPL-3.0-or-later
#include "transfer/ftp/TransferBuffer.h"

namespace ostrelle {

using Status = FtpStream::Status;

void TransferBuffer::markOpen() {
    const std::lock_guard lock(m_mutex);
    if (!m_isOpen) {
        m_isOpen = true;
        tell();
    }
}

bool TransferBuffer::write(QByteArrayView bytes) {
    std::unique_lock lock(m_mutex);
    m_isOpen = true;
    while (!bytes.isEmpty()) {
        m_room.wait(lock, [this] { return m_isAbandoned || !m_bytes.isFull(); });
        if (m_isAbandoned) {
            return false;
        }
        bytes = bytes.sliced(m_bytes.append(bytes));
        tell();
    }
    return true;
}

bool TransferBuffer::isAbandoned() const {
    const std::lock_guard lock(m_mutex);
    return m_isAbandoned;
}

void TransferBuffer::finish(const QString& failure, const FtpServerFacts& facts) {
    const std::lock_guard lock(m_mutex);
    m_isFinished = true;
    m_isOpen = m_isOpen || failure.isEmpty();
    m_failure = failure;
    m_facts = facts;
    tell();
}

Status TransferBuffer::status() const {
    const std::lock_guard lock(m_mutex);
    if (m_isAbandoned) {
        return Status::closed;
    }
    if (!m_isOpen) {
        return m_isFinished ? Status::error : Status::opening;
    }
    if (!m_wasSeenOpen) {
        m_wasSeenOpen = true;
        return Status::open;
    }
    if (!m_isFinished || !m_bytes.isEmpty()) {
        return Status::reading;
    }
    return m_failure.isEmpty() ? Status::atEnd : Status::error;
}

bool TransferBuffer::hasBytes() const {
    const std::lock_guard lock(m_mutex);
    return !m_bytes.isEmpty();
}

qint64 TransferBuffer::read(char* buffer, qint64 size) {
    const std::lock_guard lock(m_mutex);
    const qint64 got = m_bytes.take(buffer, size);
    m_room.notify_one();
    return got;
}

void TransferBuffer::abandon() {
    const std::lock_guard lock(m_mutex);
    m_isAbandoned = true;
    m_room.notify_one();
    tell();
}

Event TransferBuffer::news() {
    const std::lock_guard lock(m_mutex);
    const bool hasNews = !m_bytes.isEmpty() || m_isFinished || (m_isOpen && !m_wasSeenOpen);
    if (m_news.hasHappened() && !hasNews) {
        m_news = Event();
    } else if (hasNews) {
        m_news.happen();
    }
    return m_news;
}

QString TransferBuffer::failure() const {
    const std::lock_guard lock(m_mutex);
    return m_failure;
}

FtpServerFacts TransferBuffer::facts() const {
    const std::lock_guard lock(m_mutex);
    return m_facts;
}

void TransferBuffer::tell() {
    m_news.happen();
}

} // namespace ostrelle
