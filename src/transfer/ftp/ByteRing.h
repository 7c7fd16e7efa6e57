// SPDX-License-Identifier: GPL-3.0-or-later
#pragma once

#include <QByteArrayView>
#include <QtGlobal>
#include <algorithm>
#include <cstring>
#include <vector>

namespace ostrelle {

/// A queue of bytes of limited size.
class ByteRing {
public:
    explicit ByteRing(std::size_t capacity) : m_bytes(capacity) {}

    bool isEmpty() const { return m_size == 0; }
    bool isFull() const { return m_size == m_bytes.size(); }

    /// Appends as much as there is room for, and returns how much that was.
    qsizetype append(QByteArrayView bytes) {
        const std::size_t wanted = std::min(static_cast<std::size_t>(bytes.size()), m_bytes.size() - m_size);
        const std::size_t end = (m_begin + m_size) % m_bytes.size();
        const std::size_t straight = std::min(wanted, m_bytes.size() - end);
        std::memcpy(m_bytes.data() + end, bytes.data(), straight);
        std::memcpy(m_bytes.data(), bytes.data() + straight, wanted - straight);
        m_size += wanted;
        return static_cast<qsizetype>(wanted);
    }
    /// Takes up to `size` bytes, and returns how many there were.
    qsizetype take(char* buffer, qsizetype size) {
        const std::size_t wanted = std::min(static_cast<std::size_t>(std::max<qsizetype>(size, 0)), m_size);
        const std::size_t straight = std::min(wanted, m_bytes.size() - m_begin);
        std::memcpy(buffer, m_bytes.data() + m_begin, straight);
        std::memcpy(buffer + straight, m_bytes.data(), wanted - straight);
        m_begin = (m_begin + wanted) % m_bytes.size();
        m_size -= wanted;
        return static_cast<qsizetype>(wanted);
    }

private:
    std::vector<char> m_bytes;
    std::size_t m_begin = 0;
    std::size_t m_size = 0;
};

} // namespace ostrelle
