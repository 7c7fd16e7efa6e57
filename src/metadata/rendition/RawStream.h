// SPDX-License-Identifier: GPL-3.0-or-later
#pragma once

#include <libraw/libraw.h>

#include <cstdint>
#include <limits>

namespace ostrelle {

/// Reads a RAW file through a small buffer and counts the bytes requested past its end: several of the
/// library's decoders ignore the end of the data and return what was left in their buffers.
class RawStream : public LibRaw_bigfile_datastream {
public:
    using LibRaw_bigfile_datastream::LibRaw_bigfile_datastream;

    int read(void* buffer, std::size_t size, std::size_t count) override;
    int get_char() override;

    /// From now on, reading throws an exception of the library once more than this many bytes were missed:
    /// some headers make it read billions. Not for decoders, which may read on several threads.
    void allowMissingBytes(std::int64_t bytes) { m_allowed = bytes; }
    /// The number of bytes missed since the last call. Lifts the limit.
    std::int64_t takeMissingBytes();

private:
    void miss(std::int64_t bytes);

    std::int64_t m_missing = 0;
    std::int64_t m_allowed = std::numeric_limits<std::int64_t>::max();
};

} // namespace ostrelle
