// SPDX-License-Identifier: GPL-3.0-or-later
#include "metadata/rendition/JpegSource.h"

#include <jerror.h>

#include <algorithm>

namespace ostrelle {

JpegSource::JpegSource(std::FILE* file, qint64 length)
    : jpeg_source_mgr{}, m_file(file), m_remaining(std::max<qint64>(length, 0)) {
    init_source = [](j_decompress_ptr) {};
    term_source = [](j_decompress_ptr) {};
    resync_to_restart = jpeg_resync_to_restart;
    fill_input_buffer = [](j_decompress_ptr info) -> boolean {
        of(info).fill(info);
        return TRUE;
    };
    skip_input_data = [](j_decompress_ptr info, long count) { of(info).skip(count); };
}

void JpegSource::fill(j_decompress_ptr info) {
    const auto wanted = static_cast<std::size_t>(std::min<qint64>(m_remaining, std::ssize(m_buffer)));
    bytes_in_buffer = wanted > 0 ? std::fread(m_buffer.data(), 1, wanted, m_file) : 0;
    m_remaining -= static_cast<qint64>(bytes_in_buffer);
    if (bytes_in_buffer == 0) {
        m_remaining = 0;
        WARNMS(info, JWRN_JPEG_EOF);
        m_buffer[0] = 0xFF;
        m_buffer[1] = JPEG_EOI;
        bytes_in_buffer = 2;
    }
    next_input_byte = m_buffer.data();
}

void JpegSource::skip(qint64 count) {
    const qint64 buffered = std::clamp<qint64>(count, 0, static_cast<qint64>(bytes_in_buffer));
    next_input_byte += buffered;
    bytes_in_buffer -= static_cast<std::size_t>(buffered);
    const qint64 ahead = std::clamp<qint64>(count - buffered, 0, m_remaining);
    if (ahead > 0) {
        m_remaining = std::fseek(m_file, ahead, SEEK_CUR) == 0 ? m_remaining - ahead : 0;
    }
}

} // namespace ostrelle
