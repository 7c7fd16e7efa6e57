// SPDX-License-Identifier: GPL-3.0-or-later
#pragma once

#include <algorithm>
#include <cstddef>
#include <memory>
#include <span>

namespace ostrelle {

/// A queue of bytes of limited size. What is free or filled is handed out as spans, so that one thread may
/// fill and another may empty it at the same time, as long as a lock guards each call.
class ByteRing {
public:
    /// Memory that is never filled costs nothing: most of it is not touched for a small file.
    explicit ByteRing(std::size_t capacity)
        : m_capacity(capacity), m_bytes(std::make_unique_for_overwrite<char[]>(capacity)) {}

    bool isEmpty() const { return m_size == 0; }
    bool isFull() const { return m_size == m_capacity; }

    /// Where the next bytes go; empty only if the ring is full.
    std::span<char> free() {
        const std::size_t end = (m_begin + m_size) % m_capacity;
        return {m_bytes.get() + end, std::min(m_capacity - m_size, m_capacity - end)};
    }
    /// The first bytes of free() have been filled.
    void append(std::size_t count) { m_size += count; }

    /// The bytes that came first; empty only if the ring is.
    std::span<const char> filled() const {
        return {m_bytes.get() + m_begin, std::min(m_size, m_capacity - m_begin)};
    }
    /// The first bytes of filled() are not wanted any more.
    void drop(std::size_t count) {
        m_begin = (m_begin + count) % m_capacity;
        m_size -= count;
    }

private:
    std::size_t m_capacity;
    std::unique_ptr<char[]> m_bytes;
    std::size_t m_begin = 0;
    std::size_t m_size = 0;
};

} // namespace ostrelle
