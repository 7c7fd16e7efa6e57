// SPDX-License-Identifier: GPL-3.0-or-later
#include "metadata/jpeg/EmbeddedEditCheck.h"

#include "metadata/bytes/JpegSegments.h"
#include "metadata/bytes/TiffBlock.h"
#include "metadata/jpeg/EditRefusal.h"
#include "metadata/jpeg/EmbeddedMetadata.h"
#include "metadata/jpeg/IptcRecords.h"
#include "metadata/jpeg/PhotoshopResources.h"

#include <algorithm>
#include <optional>
#include <utility>

namespace ostrelle {

using namespace Qt::StringLiterals;

namespace {

using Kind = JpegSegment::Kind;

/// Everything in a file that a caption must not change, in a form fit for comparison.
struct ForeignContent {
    QByteArrayView picture; ///< from the first scan to the end of the file, which must outlive this
    QList<QByteArray> segments;
    QList<std::pair<quint16, QByteArray>> resources;
    QList<std::pair<int, QString>> iptcTexts;
    QList<std::pair<int, QByteArray>> iptcData;
    QList<std::pair<quint16, QByteArray>> tiff;
    QList<std::pair<quint16, QByteArray>> exif;

    friend bool operator==(const ForeignContent&, const ForeignContent&) = default;
};

QByteArray valueOf(const TiffBlock& block, const TiffEntry& entry) {
    const std::optional<QByteArrayView> value = block.value(entry);
    return tiffShort(entry.type, true) + tiffLong(entry.count, true) +
           (value ? value->toByteArray() : block.bytes().sliced(entry.at + 8, 4).toByteArray());
}

QList<std::pair<quint16, QByteArray>> valuesOf(const TiffBlock& block, const TiffDirectory& directory) {
    QList<std::pair<quint16, QByteArray>> values;
    for (const TiffEntry& entry : directory.entries) {
        const bool isOwn = entry.tag == tiff::imageDescription || entry.tag == tiff::userComment ||
                           entry.tag == tiff::exifDirectory;
        if (!isOwn) {
            values.append({entry.tag, valueOf(block, entry)});
        }
    }
    if (directory.next != 0) {
        values.append({0, tiffLong(directory.next, true)});
    }
    return values;
}

void addExif(QByteArrayView content, ForeignContent& foreign) {
    const std::optional<TiffBlock> block = TiffBlock::open(content);
    const std::optional<TiffDirectory> first = block ? block->firstDirectory() : std::nullopt;
    if (!first) {
        return;
    }
    foreign.tiff = valuesOf(*block, *first);
    if (const auto exif = block->directoryBelow(*first, tiff::exifDirectory)) {
        foreign.exif = valuesOf(*block, *exif);
    }
}

void addRecords(const IptcRecords& records, ForeignContent& foreign) {
    for (const IptcDataSet& dataSet : records.dataSets()) {
        const int key = dataSet.record << 8 | dataSet.number;
        if (dataSet.isText() && dataSet.number != IptcRecords::captionNumber) {
            foreign.iptcTexts.append({key, records.text(dataSet)});
        } else if (!dataSet.isText() && !dataSet.isCharset()) {
            foreign.iptcData.append({key, dataSet.value});
        }
    }
}

void addPhotoshop(const JpegSegments& jpeg, QByteArrayView file, ForeignContent& foreign) {
    PhotoshopData data;
    for (const JpegSegment& segment : jpeg.all(Kind::photoshop)) {
        data.add(contentOf(segment, file));
    }
    for (const PhotoshopResource& resource : data.resources()) {
        const QByteArray bytes = resource.data.of(data.bytes).toByteArray();
        if (resource.id == PhotoshopResource::iptc) {
            addRecords(IptcRecords::parse(bytes), foreign);
        } else if (resource.id != PhotoshopResource::iptcDigest) {
            foreign.resources.append({resource.id, bytes});
        }
    }
}

ForeignContent foreignContentOf(QByteArrayView file) {
    ForeignContent foreign;
    const std::optional<JpegSegments> jpeg = JpegSegments::walk(file);
    if (!jpeg) {
        return foreign;
    }
    foreign.picture = file.sliced(jpeg->pictureBegin);
    for (const JpegSegment& segment : jpeg->segments) {
        if (segment.is(Kind::other) || segment.is(Kind::xmpExtension)) {
            foreign.segments.append(segment.range.of(file).toByteArray());
        } else if (segment.is(Kind::exif)) {
            addExif(contentOf(segment, file), foreign);
        }
    }
    addPhotoshop(*jpeg, file, foreign);
    return foreign;
}

bool hasCaptionEverywhere(QByteArrayView file, const QString& caption) {
    const std::optional<EmbeddedMetadata> metadata = parseEmbeddedMetadata(file);
    return metadata && metadata->iptcText(u"Caption/Abstract"_s) == caption && metadata->tiff &&
           metadata->tiff->imageDescription == caption && metadata->exif &&
           metadata->exif->userComment == caption;
}

} // namespace

void checkEmbeddedEdit(QByteArrayView before, QByteArrayView after, const QString& caption) {
    if (!hasCaptionEverywhere(after, caption)) {
        throw EditRefusal(u"the caption does not read back from its metadata"_s);
    }
    if (foreignContentOf(before) != foreignContentOf(after)) {
        throw EditRefusal(u"other metadata or the picture would change"_s);
    }
}

} // namespace ostrelle
