// SPDX-License-Identifier: GPL-3.0-or-later
#include "metadata/jpeg/EmbeddedCaptionEdit.h"

#include "metadata/bytes/JpegSegments.h"
#include "metadata/jpeg/EditRefusal.h"
#include "metadata/jpeg/EmbeddedEditCheck.h"
#include "metadata/jpeg/ExifCaptionEdit.h"
#include "metadata/jpeg/IptcRecords.h"
#include "metadata/jpeg/MultiPictureIndex.h"
#include "metadata/jpeg/PhotoshopResources.h"
#include "metadata/jpeg/XmpPacket.h"
#include "metadata/xml/XmlDocument.h"
#include "metadata/xml/XmlEncoding.h"
#include "metadata/xml/XmlError.h"
#include "metadata/xml/XmpNamespaces.h"

#include <QCryptographicHash>
#include <algorithm>
#include <optional>
#include <utility>

namespace ostrelle {

using namespace Qt::StringLiterals;

namespace {

using Kind = JpegSegment::Kind;

constexpr QByteArrayView usualCaptionName = "dc:description";

JpegSegments segmentsOf(QByteArrayView file) {
    std::optional<JpegSegments> jpeg = JpegSegments::walk(file);
    if (!jpeg || !jpeg->reachesPicture) {
        throw EditRefusal(u"its segments do not lead to a picture"_s);
    }
    return std::move(*jpeg);
}

QByteArray segmentOf(quint8 marker, Kind kind, QByteArrayView content) {
    const QByteArray payload = jpegSignature(kind).toByteArray().append(content);
    if (payload.size() > JpegSegments::maximumPayload) {
        throw EditRefusal(u"a metadata segment has no room for the caption"_s);
    }
    return jpegSegment(marker, payload);
}

/// One write of a caption to one file.
class EmbeddedCaptionEdit {
public:
    EmbeddedCaptionEdit(QByteArrayView file, const QString& caption)
        : m_file(file), m_jpeg(segmentsOf(file)), m_caption(caption) {}

    QByteArray run() {
        refuseCaptionElsewhere();
        refuseAbsoluteTrailer();
        editExif();
        editPhotoshop();
        editPackets();
        shiftMultiPictureIndexes();
        return spliced(m_file, m_splices);
    }

private:
    void editExif() {
        const std::vector<JpegSegment> segments = m_jpeg.all(Kind::exif);
        if (segments.size() > 1) {
            throw EditRefusal(u"it has several EXIF segments"_s);
        }
        if (segments.empty()) {
            insertBehind({JpegSegments::app0},
                         segmentOf(JpegSegments::app1, Kind::exif, withExifCaption({}, m_caption)));
            return;
        }
        const JpegSegment& segment = segments.front();
        replace(segment, segmentOf(segment.marker, segment.kind,
                                   withExifCaption(contentOf(segment, m_file), m_caption)));
    }

    void editPhotoshop() {
        const std::vector<JpegSegment> segments = m_jpeg.all(Kind::photoshop);
        PhotoshopData data;
        for (const JpegSegment& segment : segments) {
            data.add(contentOf(segment, m_file));
        }
        const std::vector<ByteSplice> splices = photoshopSplices(data);
        if (segments.empty()) {
            insertBehind({JpegSegments::app0, JpegSegments::app1},
                         photoshopSegments(spliced(data.bytes, splices)));
            return;
        }
        for (std::size_t index = 0; index < segments.size(); ++index) {
            const ByteRange old{data.segmentBegins[index], index + 1 < segments.size()
                                                               ? data.segmentBegins[index + 1]
                                                               : data.bytes.size()};
            const std::optional<QByteArray> content = contentAfter(data, old, splices);
            if (content) {
                replace(segments[index], photoshopSegments(*content));
            }
        }
    }

    /// A segment's content after the splices; nothing when they do not change it. A splice that runs on into
    /// the next segment belongs to the one it begins in.
    static std::optional<QByteArray> contentAfter(const PhotoshopData& data, const ByteRange& old,
                                                  const std::vector<ByteSplice>& splices) {
        std::vector<ByteSplice> own;
        for (const ByteSplice& splice : splices) {
            const bool beginsHere = splice.range.begin >= old.begin && splice.range.begin < old.end;
            const bool isBehindAll = splice.range.begin == data.bytes.size() && old.end == data.bytes.size();
            if (beginsHere || isBehindAll || splice.range.overlaps(old)) {
                const ByteRange part{std::max(splice.range.begin, old.begin) - old.begin,
                                     std::min(splice.range.end, old.end) - old.begin};
                own.push_back({part, beginsHere || isBehindAll ? splice.bytes : QByteArray()});
            }
        }
        return own.empty() ? std::nullopt : std::optional(spliced(old.of(data.bytes), own));
    }

    /// The content in as many segments as it needs; readers join them again.
    static QByteArray photoshopSegments(QByteArrayView content) {
        const qsizetype most = JpegSegments::maximumPayload - jpegSignature(Kind::photoshop).size();
        QByteArray segments;
        do {
            const qsizetype size = std::min(content.size(), most);
            segments += segmentOf(JpegSegments::app13, Kind::photoshop, content.first(size));
            content = content.sliced(size);
        } while (!content.isEmpty());
        return segments;
    }

    std::vector<ByteSplice> photoshopSplices(const PhotoshopData& data) const {
        const std::vector<PhotoshopResource> resources = data.resources();
        std::vector<ByteSplice> splices;
        std::optional<QByteArray> oldRecords; // of the block that every reader uses
        QByteArray newRecords;
        for (const PhotoshopResource& resource : resources) {
            if (resource.id != PhotoshopResource::iptc) {
                continue;
            }
            const QByteArrayView old = resource.data.of(data.bytes);
            const bool isFirst = resource.isCommon && !oldRecords;
            const QByteArray edited = recordsWithCaption(old, isFirst);
            if (isFirst) {
                oldRecords = old.toByteArray();
                newRecords = edited;
            }
            splices.push_back(withData(resource, edited));
        }
        if (!oldRecords) {
            newRecords = recordsWithCaption({}, true);
            const qsizetype end = resources.empty() ? 0 : resources.back().range.end;
            splices.push_back({{end, end}, photoshopResource(PhotoshopResource::iptc, newRecords)});
        }
        // Readers use the digest to tell whether the packet was written from these records.
        for (const PhotoshopResource& resource : resources) {
            if (resource.id == PhotoshopResource::iptcDigest &&
                resource.data.of(data.bytes) == digestOf(oldRecords.value_or(QByteArray()))) {
                splices.push_back(withData(resource, digestOf(newRecords)));
            }
        }
        return splices;
    }

    static QByteArray digestOf(const QByteArray& records) {
        return QCryptographicHash::hash(records, QCryptographicHash::Md5);
    }

    /// Some readers use only the first block, others the last value of all, so every block with a caption
    /// gets the new one.
    QByteArray recordsWithCaption(QByteArrayView old, bool isFirst) const {
        IptcRecords records = IptcRecords::parse(old);
        if (isFirst || records.hasCaption()) {
            records.setCaption(m_caption);
        } else {
            records.becomeUtf8();
        }
        return records.bytes();
    }

    void editPackets() {
        for (const JpegSegment& segment : m_jpeg.all(Kind::xmpPacket)) {
            const QByteArrayView content = contentOf(segment, m_file);
            if (const std::optional<QByteArray> packet = editedPacket(packetText(content).toByteArray())) {
                const qsizetype most = JpegSegments::maximumPayload - jpegSignature(segment.kind).size();
                replace(segment, segmentOf(segment.marker, segment.kind, withLessPadding(*packet, most)));
            }
        }
    }

    std::optional<QByteArray> editedPacket(const QByteArray& packet) const {
        try {
            return withPacketCaption(XmlDocument::parse(packet), m_caption);
        } catch (const XmlError&) {
            if (packet.contains(usualCaptionName)) { // lenient readers would still show the old text
                throw EditRefusal(u"its XMP packet is damaged"_s);
            }
            return std::nullopt;
        }
    }

    /// An extension cannot be edited, as the packet refers to it by digest; programs put only bulk there.
    /// Only some programs read a packet without the usual signature.
    void refuseCaptionElsewhere() const {
        QByteArray joined;
        for (const JpegSegment& segment : m_jpeg.segments) {
            constexpr qsizetype headerSize = 32 + 4 + 4; // the extension's digest, full size and offset
            const QByteArrayView content = contentOf(segment, m_file);
            if (segment.is(Kind::xmpExtension)) {
                joined += content.sliced(std::min(content.size(), headerSize));
            } else if (segment.is(Kind::other) && segment.marker == JpegSegments::app1) {
                joined += content;
            }
        }
        if (joined.contains(usualCaptionName)) {
            throw EditRefusal(u"it has a caption in an unusual XMP segment"_s);
        }
    }

    /// The one kind of trailer whose offsets count from the start of the file.
    void refuseAbsoluteTrailer() const {
        constexpr qsizetype size = 12;
        const QByteArrayView trailer = m_file.last(std::min(m_file.size(), size));
        if (trailer.startsWith("AXS!") || trailer.startsWith("AXS*")) {
            throw EditRefusal(u"its AFCP trailer would point elsewhere"_s);
        }
    }

    /// Offsets to the file's other pictures count from the index itself.
    void shiftMultiPictureIndexes() {
        for (const JpegSegment& segment : m_jpeg.all(Kind::multiPicture)) {
            qsizetype growth = 0;
            qsizetype growthBehind = 0;
            for (const ByteSplice& splice : m_splices) {
                growth += splice.growth();
                growthBehind += splice.range.begin >= segment.range.end ? splice.growth() : 0;
            }
            const QByteArray index =
                shiftedMultiPictureIndex(contentOf(segment, m_file), growth, growthBehind);
            replace(segment, segmentOf(segment.marker, segment.kind, index));
        }
    }

    void replace(const JpegSegment& segment, QByteArray bytes) {
        m_splices.push_back({segment.range, std::move(bytes)});
    }

    /// Inserts after the file's leading segments with these markers.
    void insertBehind(const QList<quint8>& markers, QByteArray bytes) {
        qsizetype at = 2;
        for (const JpegSegment& segment : m_jpeg.segments) {
            if (segment.range.begin != at || !markers.contains(segment.marker)) {
                break;
            }
            at = segment.range.end;
        }
        m_splices.push_back({{at, at}, std::move(bytes)});
    }

    QByteArrayView m_file;
    JpegSegments m_jpeg;
    QString m_caption;
    std::vector<ByteSplice> m_splices;
};

} // namespace

QByteArray withEmbeddedCaption(QByteArrayView file, const QString& caption) {
    const QString writable = withoutForbiddenCharacters(caption);
    QByteArray edited = EmbeddedCaptionEdit(file, writable).run();
    checkEmbeddedEdit(file, edited, writable);
    return edited;
}

bool hasSignedManifest(QByteArrayView file) {
    const std::optional<JpegSegments> jpeg = JpegSegments::walk(file);
    return jpeg && std::ranges::any_of(jpeg->segments, [file](const JpegSegment& segment) {
               const QByteArrayView payload = segment.payload.of(file);
               return segment.marker == JpegSegments::app11 && payload.startsWith("JP") &&
                      payload.contains("c2pa");
           });
}

} // namespace ostrelle
