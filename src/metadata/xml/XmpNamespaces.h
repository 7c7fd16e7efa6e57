// SPDX-License-Identifier: GPL-3.0-or-later
#pragma once

#include <QByteArrayView>

/// Namespace URIs of XMP (ISO 16684-1, section 8) and of the IPTC Core and Extension schemas for XMP.
namespace ostrelle::xmp {

inline constexpr QByteArrayView rdf = "http://www.w3.org/1999/02/22-rdf-syntax-ns#";
inline constexpr QByteArrayView dc = "http://purl.org/dc/elements/1.1/";
inline constexpr QByteArrayView photoshop = "http://ns.adobe.com/photoshop/1.0/";
inline constexpr QByteArrayView exif = "http://ns.adobe.com/exif/1.0/";
inline constexpr QByteArrayView basic = "http://ns.adobe.com/xap/1.0/";
inline constexpr QByteArrayView iptcCore = "http://iptc.org/std/Iptc4xmpCore/1.0/xmlns/";
inline constexpr QByteArrayView iptcExtension = "http://iptc.org/std/Iptc4xmpExt/2008-02-29/";

} // namespace ostrelle::xmp
