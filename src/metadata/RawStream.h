// SPDX-License-Identifier: GPL-3.0-or-later
#pragma once

#include <libraw/libraw.h>

#include <cstdint>

namespace ostrelle {

/// A RAW file, read through a small buffer. It counts what the decoder asked for behind the end: several
/// decoders of the library take no notice when the data run out, and hand over what was in their buffers.
class RawStream : public LibRaw_file_datastream {
public:
    using LibRaw_file_datastream::LibRaw_file_datastream;

    int read(void* buffer, std::size_t size, std::size_t count) override;
    int get_char() override;

    /// The bytes missed since the last call.
    std::int64_t takeMissingBytes();

private:
    std::int64_t m_missing = 0;
};

} // namespace ostrelle
