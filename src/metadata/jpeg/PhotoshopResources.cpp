// SPDX-License-Identifier: GPL-3.0-or-later
#include "metadata/jpeg/PhotoshopResources.h"

#include <QtEndian>
#include <algorithm>
#include <array>
#include <optional>

namespace ostrelle {

namespace {

constexpr qsizetype signatureSize = 4;
constexpr qsizetype nameAt = signatureSize + 2;
/// Limits time and memory; programs write a few dozen.
constexpr std::size_t maximumResources = 10'000;

bool beginsResource(QByteArrayView bytes) {
    static constexpr std::array<QByteArrayView, 5> signatures = {"8BIM", "AgHg", "DCSR", "MeSa", "PHUT"};
    return std::ranges::any_of(signatures,
                               [bytes](QByteArrayView signature) { return bytes.startsWith(signature); });
}

/// Data is padded to an even size. Some writers omit the padding; what follows reveals it.
bool isPadded(QByteArrayView bytes, qsizetype dataEnd) {
    return dataEnd < bytes.size() && !beginsResource(bytes.sliced(dataEnd));
}

std::optional<PhotoshopResource> resourceAt(QByteArrayView bytes, qsizetype at) {
    const QByteArrayView rest = bytes.sliced(at);
    if (!beginsResource(rest) || rest.size() <= nameAt) {
        return std::nullopt;
    }
    const qsizetype nameSize = 1 + static_cast<quint8>(rest[nameAt]);
    const qsizetype sizeAt = nameAt + nameSize + nameSize % 2;
    if (rest.size() < sizeAt + 4) {
        return std::nullopt;
    }
    const qsizetype size = qFromBigEndian<quint32>(rest.data() + sizeAt);
    if (size > rest.size() - sizeAt - 4) {
        return std::nullopt;
    }
    const ByteRange data{at + sizeAt + 4, at + sizeAt + 4 + size};
    const qsizetype end = data.end + (size % 2 != 0 && isPadded(bytes, data.end) ? 1 : 0);
    return PhotoshopResource{qFromBigEndian<quint16>(rest.data() + signatureSize),
                             {at, end},
                             at + sizeAt,
                             data,
                             rest.startsWith("8BIM")};
}

QByteArray sizedData(QByteArrayView data) {
    QByteArray bytes(4, Qt::Uninitialized);
    qToBigEndian(static_cast<quint32>(data.size()), bytes.data());
    bytes += data;
    return data.size() % 2 == 0 ? bytes : bytes + '\0';
}

} // namespace

void PhotoshopData::add(QByteArrayView segmentContent) {
    segmentBegins.push_back(bytes.size());
    bytes += segmentContent;
}

std::vector<PhotoshopResource> PhotoshopData::resources() const {
    std::vector<PhotoshopResource> found;
    qsizetype at = 0;
    for (const qsizetype begin : segmentBegins) {
        at = std::max(at, begin);
        std::optional<PhotoshopResource> resource = resourceAt(bytes, at);
        while (resource && found.size() < maximumResources) {
            found.push_back(*resource);
            at = resource->range.end;
            resource = resourceAt(bytes, at);
        }
    }
    return found;
}

QByteArray photoshopResource(quint16 id, QByteArrayView data) {
    QByteArray bytes("8BIM\0\0\0\0", 8);
    qToBigEndian(id, bytes.data() + signatureSize);
    return bytes + sizedData(data);
}

ByteSplice withData(const PhotoshopResource& resource, QByteArrayView data) {
    return {{resource.sizeAt, resource.range.end}, sizedData(data)};
}

} // namespace ostrelle
