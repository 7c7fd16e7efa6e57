// SPDX-License-Identifier: GPL-3.0-or-later
#include "metadata/rendition/RawStream.h"

#include <algorithm>
#include <utility>

namespace ostrelle {

int RawStream::read(void* buffer, std::size_t size, std::size_t count) {
    const int got = LibRaw_bigfile_datastream::read(buffer, size, count);
    miss(static_cast<std::int64_t>(size * count) - static_cast<std::int64_t>(size) * std::max(got, 0));
    return got;
}

int RawStream::get_char() {
    const int byte = LibRaw_bigfile_datastream::get_char();
    miss(byte < 0 ? 1 : 0);
    return byte;
}

void RawStream::miss(std::int64_t bytes) {
    m_missing += bytes;
    if (m_missing > m_allowed) {
        throw LIBRAW_EXCEPTION_IO_EOF;
    }
}

std::int64_t RawStream::takeMissingBytes() {
    m_allowed = std::numeric_limits<std::int64_t>::max();
    return std::exchange(m_missing, 0);
}

} // namespace ostrelle
