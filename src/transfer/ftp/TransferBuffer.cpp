// SPDX-License-Identifier: GPL-3.0-or-later
#include "transfer/ftp/TransferBuffer.h"

#include <algorithm>
#include <cstring>

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
        const std::span<char> room = m_bytes.free();
        const qsizetype count = std::min(bytes.size(), static_cast<qsizetype>(room.size()));
        lock.unlock(); // the event loop must not wait for the copy
        std::memcpy(room.data(), bytes.data(), static_cast<std::size_t>(count));
        lock.lock();
        m_bytes.append(static_cast<std::size_t>(count));
        bytes = bytes.sliced(count);
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
    std::unique_lock lock(m_mutex);
    const std::span<const char> filled = m_bytes.filled();
    lock.unlock();
    const std::size_t count = std::min(filled.size(), static_cast<std::size_t>(std::max<qint64>(size, 0)));
    std::memcpy(buffer, filled.data(), count);
    lock.lock();
    m_bytes.drop(count);
    m_room.notify_one();
    return static_cast<qint64>(count);
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
