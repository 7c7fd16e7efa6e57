// SPDX-License-Identifier: GPL-3.0-or-later
#pragma once

#include <QByteArray>
#include <array>

namespace ostrelle {

/// The kinds of RAW file, each by its maker's extension.
enum class RawKind { arw, cr2, cr3, dng, nef, orf, pef, raf, rw2 };

inline constexpr std::array rawKinds = {RawKind::arw, RawKind::cr2, RawKind::cr3, RawKind::dng, RawKind::nef,
                                        RawKind::orf, RawKind::pef, RawKind::raf, RawKind::rw2};

/// Options of a RAW file.
struct RawOptions {
    QByteArray preview = {};      ///< the large JPEG; in CR3, that of the full picture
    QByteArray smallPreview = {}; ///< the other JPEG of a CR3
    qsizetype rawSize = 20'000;   ///< of what takes the place of the raw data, in bytes
    int orientation = 1;          ///< as stated in the file; RAF has it only in the EXIF of its preview
};

/// A file as the maker's cameras write it, with the preview in their usual place. No library knows its
/// camera, and its raw data is not a picture.
QByteArray rawFile(RawKind kind, const RawOptions& options);

} // namespace ostrelle
