// SPDX-License-Identifier: GPL-3.0-or-later
#include "metadata/jpeg/EmbeddedMetadata.h"

#include "metadata/bytes/JpegFront.h"
#include "metadata/bytes/JpegSegments.h"
#include "metadata/bytes/TiffBlock.h"
#include "metadata/facts/MetadataText.h"
#include "metadata/facts/XMPError.h"
#include "metadata/jpeg/IptcRecords.h"
#include "metadata/jpeg/PhotoshopResources.h"
#include "metadata/jpeg/XmpPacket.h"
#include "metadata/xml/XmlDocument.h"
#include "metadata/xml/XmlError.h"
#include "metadata/xml/XmpNamespaces.h"

#include <algorithm>
#include <array>

namespace ostrelle {

using namespace Qt::StringLiterals;

namespace {

using Kind = JpegSegment::Kind;

struct IptcField {
    quint8 number; ///< in the application record
    QStringView name;
};

constexpr std::array iptcFields = {
    IptcField{3, u"ObjectTypeReference"},
    IptcField{4, u"ObjectAttributeReference"},
    IptcField{5, u"ObjectName"},
    IptcField{7, u"EditStatus"},
    IptcField{8, u"EditorialUpdate"},
    IptcField{10, u"Urgency"},
    IptcField{12, u"SubjectReference"},
    IptcField{15, u"Category"},
    IptcField{20, u"SupplementalCategory"},
    IptcField{22, u"FixtureIdentifier"},
    IptcField{25, u"Keywords"},
    IptcField{26, u"ContentLocationCode"},
    IptcField{27, u"ContentLocationName"},
    IptcField{30, u"ReleaseDate"},
    IptcField{35, u"ReleaseTime"},
    IptcField{37, u"ExpirationDate"},
    IptcField{38, u"ExpirationTime"},
    IptcField{40, u"SpecialInstructions"},
    IptcField{42, u"ActionAdvised"},
    IptcField{45, u"ReferenceService"},
    IptcField{47, u"ReferenceDate"},
    IptcField{50, u"ReferenceNumber"},
    IptcField{55, u"DateCreated"},
    IptcField{60, u"TimeCreated"},
    IptcField{62, u"DigitalCreationDate"},
    IptcField{63, u"DigitalCreationTime"},
    IptcField{65, u"OriginatingProgram"},
    IptcField{70, u"ProgramVersion"},
    IptcField{75, u"ObjectCycle"},
    IptcField{80, u"Byline"},
    IptcField{85, u"BylineTitle"},
    IptcField{90, u"City"},
    IptcField{92, u"Sub-location"},
    IptcField{95, u"Province/State"},
    IptcField{100, u"Country/PrimaryLocationCode"},
    IptcField{101, u"Country/PrimaryLocationName"},
    IptcField{103, u"OriginalTransmissionReference"},
    IptcField{105, u"Headline"},
    IptcField{110, u"Credit"},
    IptcField{115, u"Source"},
    IptcField{116, u"CopyrightNotice"},
    IptcField{118, u"Contact"},
    IptcField{120, u"Caption/Abstract"},
    IptcField{122, u"Writer/Editor"},
    IptcField{130, u"ImageType"},
    IptcField{131, u"ImageOrientation"},
    IptcField{135, u"LanguageIdentifier"},
};

/// The substitute for an IPTC field in the XMP packet.
struct PacketField {
    QStringView name;
    QByteArrayView localName;
    QByteArrayView namespaceUri;
};

constexpr std::array packetFields = {
    PacketField{u"Caption/Abstract", "description", xmp::dc},
    PacketField{u"Headline", "Headline", xmp::photoshop},
    PacketField{u"City", "City", xmp::photoshop},
    PacketField{u"Province/State", "State", xmp::photoshop},
    PacketField{u"Country/PrimaryLocationName", "Country", xmp::photoshop},
    PacketField{u"DateCreated", "DateCreated", xmp::photoshop},
    PacketField{u"Sub-location", "Location", xmp::iptcCore},
    PacketField{u"Keywords", "subject", xmp::dc},
    PacketField{u"CopyrightNotice", "rights", xmp::dc},
    PacketField{u"Byline", "creator", xmp::dc},
    PacketField{u"ObjectName", "title", xmp::dc},
    PacketField{u"Event", "Event", xmp::iptcExtension},
};

void addRecords(const IptcRecords& records, EmbeddedMetadata& metadata) {
    for (const IptcDataSet& dataSet : records.dataSets()) {
        const auto field = std::ranges::find(iptcFields, dataSet.number, &IptcField::number);
        if (dataSet.record == IptcRecords::applicationRecord && field != iptcFields.end()) {
            metadata.iptc[field->name.toString()].append(records.text(dataSet));
        }
    }
}

std::optional<QString> contactNameOf(const XmlDocument& packet) {
    const XmlElement contact = packet.findFirst("CreatorContactInfo", xmp::iptcCore);
    for (const QByteArrayView name : {"name", "Name"}) {
        if (const XmlElement element = contact ? contact.child(name) : XmlElement()) {
            return element.text();
        }
    }
    return std::nullopt;
}

/// A damaged packet counts as none.
std::optional<XmlDocument> parsePacket(QByteArrayView content) {
    try {
        return XmlDocument::parse(packetText(content).toByteArray());
    } catch (const XmlError&) {
        return std::nullopt;
    }
}

void addPacket(QByteArrayView content, EmbeddedMetadata& metadata) {
    const std::optional<XmlDocument> packet = parsePacket(content);
    if (!packet) {
        return;
    }
    if (const auto captions = packetValues(*packet, "description", xmp::dc);
        captions && !captions->isEmpty()) {
        metadata.packetCaption = captions->first();
    }
    for (const PacketField& field : packetFields) {
        const QString name = field.name.toString();
        if (metadata.iptc.contains(name)) {
            continue;
        }
        const auto values = packetValues(*packet, field.localName, field.namespaceUri);
        if (values && !values->isEmpty()) {
            metadata.iptc.insert(name, *values);
        }
    }
    metadata.contactName = metadata.contactName ? metadata.contactName : contactNameOf(*packet);
}

std::optional<QString> exifText(const TiffBlock& block, const TiffDirectory& directory, quint16 tag) {
    const std::optional<TiffEntry> entry = directory.find(tag);
    const bool isText = entry && (entry->type == tiff::asciiType || entry->type == tiff::byteType ||
                                  entry->type == tiff::utf8Type);
    const std::optional<QByteArrayView> value = isText ? block.value(*entry) : std::nullopt;
    return value ? std::optional(decodeExifText(*value)) : std::nullopt;
}

std::optional<QString> userComment(const TiffBlock& block, const TiffDirectory& directory) {
    const std::optional<TiffEntry> entry = directory.find(tiff::userComment);
    const std::optional<QByteArrayView> value = entry ? block.value(*entry) : std::nullopt;
    return value ? std::optional(decodeUserComment(*value, block.isBigEndian())) : std::nullopt;
}

void addExif(QByteArrayView content, EmbeddedMetadata& metadata) {
    const std::optional<TiffBlock> block = TiffBlock::open(content);
    const std::optional<TiffDirectory> first = block ? block->firstDirectory() : std::nullopt;
    if (!first) {
        return;
    }
    metadata.tiff = {.imageDescription = exifText(*block, *first, tiff::imageDescription),
                     .dateTime = exifText(*block, *first, tiff::dateTime),
                     .copyright = exifText(*block, *first, tiff::copyright),
                     .artist = exifText(*block, *first, tiff::artist)};
    if (const auto exif = block->directoryBelow(*first, tiff::exifDirectory)) {
        metadata.exif = {.userComment = userComment(*block, *exif),
                         .dateTimeOriginal = exifText(*block, *exif, tiff::dateTimeOriginal)};
    }
}

} // namespace

std::optional<QString> EmbeddedMetadata::iptcText(const QString& name) const {
    const auto found = iptc.find(name);
    return found == iptc.end() ? std::nullopt : std::optional(found->first());
}

std::optional<EmbeddedMetadata> parseEmbeddedMetadata(QByteArrayView file) {
    const std::optional<JpegSegments> jpeg = JpegSegments::walk(file);
    if (!jpeg) {
        return std::nullopt;
    }
    EmbeddedMetadata metadata;
    PhotoshopData photoshop;
    for (const JpegSegment& segment : jpeg->all(Kind::photoshop)) {
        photoshop.add(contentOf(segment, file));
    }
    for (const PhotoshopResource& resource : photoshop.resources()) {
        if (resource.id == PhotoshopResource::iptc) {
            addRecords(IptcRecords::parse(resource.data.of(photoshop.bytes)), metadata);
        }
    }
    for (const JpegSegment& segment : jpeg->all(Kind::xmpPacket)) {
        addPacket(contentOf(segment, file), metadata);
    }
    for (const JpegSegment& segment : jpeg->all(Kind::exif)) {
        if (!metadata.tiff) {
            addExif(contentOf(segment, file), metadata);
        }
    }
    return metadata;
}

std::optional<EmbeddedMetadata> readEmbeddedMetadata(const QString& path) {
    ImageFile image(path);
    return parseEmbeddedMetadata(readJpegFront(openForReading(image)));
}

QFile& openForReading(ImageFile& image) {
    QFile& file = image.bytes();
    const bool isOpen = image.open();
    if (!isOpen || !file.seek(0)) {
        throw XMPError(XMPError::Case::fileMissing,
                       u"Could not read the image: %1."_s.arg(isOpen ? file.errorString() : image.reason()));
    }
    return file;
}

} // namespace ostrelle
