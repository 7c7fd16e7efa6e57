// SPDX-License-Identifier: GPL-3.0-or-later
#pragma once

#include <QByteArray>
#include <array>

namespace ostrelle {

/// The kinds of RAW file, each by the extension of its maker.
enum class RawKind { arw, cr2, cr3, dng, nef, orf, pef, raf, rw2 };

inline constexpr std::array rawKinds = {RawKind::arw, RawKind::cr2, RawKind::cr3, RawKind::dng, RawKind::nef,
                                        RawKind::orf, RawKind::pef, RawKind::raf, RawKind::rw2};

/// What a RAW file is built with.
struct RawOptions {
    QByteArray preview = {};      ///< the large JPEG, in CR3 that of the full picture
    QByteArray smallPreview = {}; ///< the other JPEG of a CR3
    int orientation = 1;          ///< as the file states it; RAF has it in the EXIF of its preview alone
};

/// A file as the cameras of its maker write it, with the preview where these put it. Of its camera no library
/// knows, and its raw data are no picture.
QByteArray rawFile(RawKind kind, const RawOptions& options);

} // namespace ostrelle
