// SPDX-License-Identifier: GPL-3.0-or-later
#pragma once

#include <expat.h>

#include <cstdint>

namespace ostrelle::expat {

// Where expat is in its document. Expat 2.9 has new functions for it and deprecates those that Debian 12 has.
#if XML_MAJOR_VERSION == 2 && XML_MINOR_VERSION < 9

inline std::int64_t byteIndex(XML_Parser parser) {
    return XML_GetCurrentByteIndex(parser);
}
/// Of the current event; 0 when it came from an entity.
inline std::int64_t byteCount(XML_Parser parser) {
    return XML_GetCurrentByteCount(parser);
}
/// From 1.
inline std::uint64_t line(XML_Parser parser) {
    return XML_GetCurrentLineNumber(parser);
}
/// From 0.
inline std::uint64_t column(XML_Parser parser) {
    return XML_GetCurrentColumnNumber(parser);
}

#else

inline std::int64_t byteIndex(XML_Parser parser) {
    return XML_GetCurrentByteIndex64(parser);
}
inline std::int64_t byteCount(XML_Parser parser) {
    return static_cast<std::int64_t>(XML_GetCurrentByteCount64(parser));
}
inline std::uint64_t line(XML_Parser parser) {
    return XML_GetCurrentLineNumber64(parser);
}
inline std::uint64_t column(XML_Parser parser) {
    return XML_GetCurrentColumnNumber64(parser);
}

#endif

} // namespace ostrelle::expat
