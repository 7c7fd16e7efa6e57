// SPDX-License-Identifier: GPL-3.0-or-later
#pragma once

#include <libraw/libraw.h>

#include <cstdint>
#include <limits>

namespace ostrelle {

/// A RAW file, read through a small buffer. It counts what the decoder asked for behind the end: several
/// decoders of the library take no notice when the data run out, and hand over what was in their buffers.
class RawStream : public LibRaw_file_datastream {
public:
    using LibRaw_file_datastream::LibRaw_file_datastream;

    int read(void* buffer, std::size_t size, std::size_t count) override;
    int get_char() override;

    /// From now on reading ends with an exception of the library once more than this many bytes were missed:
    /// some headers have it read billions. Not for decoders, which may read on several threads.
    void allowMissingBytes(std::int64_t bytes) { m_allowed = bytes; }
    /// The bytes missed since the last call. Any number may be missed from now on.
    std::int64_t takeMissingBytes();

private:
    void miss(std::int64_t bytes);

    std::int64_t m_missing = 0;
    std::int64_t m_allowed = std::numeric_limits<std::int64_t>::max();
};

} // namespace ostrelle
