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
    ByteRange range;      ///< with its header and padding
    qsizetype sizeAt = 0; ///< of the field with the size of the data
    ByteRange data;
    bool isCommon = false; ///< has the signature that every reader knows
};

/// The content of all Photoshop segments of a file. Resources may run on from one segment into the next.
struct PhotoshopData {
    QByteArray bytes;
    std::vector<qsizetype> segmentBegins;

    void add(QByteArrayView segmentContent);
    /// What cannot be read is passed over up to the next segment that begins with a resource.
    std::vector<PhotoshopResource> resources() const;
};

/// A new resource without a name.
QByteArray photoshopResource(quint16 id, QByteArrayView data);

/// The change that gives a resource other data.
ByteSplice withData(const PhotoshopResource& resource, QByteArrayView data);

} // namespace ostrelle
