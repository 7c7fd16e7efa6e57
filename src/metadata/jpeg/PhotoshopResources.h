// SPDX-License-Identifier: GPL-3.0-or-later
#pragma once

#include "metadata/bytes/ByteSplice.h"

#include <QByteArray>
#include <QByteArrayView>
#include <vector>

namespace ostrelle {

/// One image resource of Photoshop, such as a block of IPTC data sets.
struct PhotoshopResource {
    static constexpr quint16 iptc = 0x0404;
    static constexpr quint16 iptcDigest = 0x0425;

    quint16 id = 0;
    ByteRange range;      ///< with header and padding
    qsizetype sizeAt = 0; ///< the position of the size field
    ByteRange data;
    bool isCommon = false; ///< has the signature that every reader knows
};

/// The contents of a file's Photoshop segments, joined: a resource may continue in the next segment.
struct PhotoshopData {
    QByteArray bytes;
    std::vector<qsizetype> segmentBegins;

    void add(QByteArrayView segmentContent);
    /// Unreadable bytes are skipped up to the next segment that starts with a resource.
    std::vector<PhotoshopResource> resources() const;
};

/// A new resource without a name.
QByteArray photoshopResource(quint16 id, QByteArrayView data);

/// The change that replaces a resource's data.
ByteSplice withData(const PhotoshopResource& resource, QByteArrayView data);

} // namespace ostrelle
