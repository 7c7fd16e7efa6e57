// SPDX-License-Identifier: GPL-3.0-or-later
#pragma once

#include "metadata/rendition/JpegErrors.h"

#include <QtGlobal>
#include <array>
#include <cstdio>

namespace ostrelle {

/// Feeds a stretch of a file to libjpeg and signals the end of the file where the stretch ends: a truncated
/// JPEG inside another file must not continue with the bytes that follow it.
class JpegSource : public jpeg_source_mgr {
public:
    /// The `length` bytes from the file's current position; the file must outlive the source.
    JpegSource(std::FILE* file, qint64 length);
    JpegSource(const JpegSource&) = delete;
    JpegSource& operator=(const JpegSource&) = delete;

private:
    static JpegSource& of(j_decompress_ptr info) { return static_cast<JpegSource&>(*info->src); }

    void fill(j_decompress_ptr info);
    void skip(qint64 count);

    std::FILE* m_file;
    qint64 m_remaining;
    std::array<JOCTET, 16384> m_buffer;
};

} // namespace ostrelle
