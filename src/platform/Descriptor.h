// SPDX-License-Identifier: GPL-3.0-or-later
#pragma once

#include <unistd.h>

#include <cerrno>
#include <utility>

namespace ostrelle {

/// Owns a file descriptor, or none, and closes it. Leaves errno as it is.
class Descriptor {
public:
    Descriptor() = default;
    /// Takes the result of open() or the like, including the -1 of a failure.
    explicit Descriptor(int number) : m_number(number) {}
    ~Descriptor();
    Descriptor(Descriptor&& other) noexcept : m_number(std::exchange(other.m_number, -1)) {}
    Descriptor& operator=(Descriptor&& other) noexcept {
        std::swap(m_number, other.m_number);
        return *this;
    }

    int number() const { return m_number; }
    bool isOpen() const { return m_number >= 0; }

private:
    int m_number = -1;
};

inline Descriptor::~Descriptor() {
    if (m_number >= 0) {
        const int before = errno;
        ::close(m_number);
        errno = before;
    }
}

} // namespace ostrelle
