// SPDX-License-Identifier: GPL-3.0-or-later
#include "standins/RawBuilder.h"

#include "standins/TiffBuilder.h"

#include <map>

namespace ostrelle {

namespace {

using Directory = TiffDirectoryBuilder;

/// Takes the place of the raw data.
QByteArray rawData(const RawOptions& options) {
    return QByteArray(options.rawSize, '\x5A');
}

/// Overwrites the bytes there, or appends after zeros.
void place(QByteArray& file, qsizetype offset, const QByteArray& bytes) {
    file = file.leftJustified(offset + bytes.size(), '\0').replace(offset, bytes.size(), bytes);
}

/// A TIFF-like file whose first directory follows the header.
struct TiffLayout {
    QByteArray header;
    QByteArray make;
    QByteArray model;
    std::uint16_t rawCompression; ///< a packing of the maker's own
};

const std::map<RawKind, TiffLayout> tiffLayouts = {
    {RawKind::arw, {QByteArray("II*\0\x08\0\0\0", 8), "SONY", "ILCE-99", 32766}},
    // Also names the directory of its raw data in the header.
    {RawKind::cr2, {QByteArray("II*\0\x10\0\0\0CR\2\0\0\3\0\0", 16), "Canon", "Canon EOS 99D", 6}},
    {RawKind::dng, {QByteArray("II*\0\x08\0\0\0", 8), "Ostrelle", "Ostrelle Test Camera", 52546}},
    {RawKind::nef, {QByteArray("MM\0*\0\0\0\x08", 8), "NIKON CORPORATION", "NIKON Z 99", 34713}},
    {RawKind::orf, {QByteArray("IIRO\x08\0\0\0", 8), "OM Digital Solutions", "OM-99", 1}},
    {RawKind::pef, {QByteArray("MM\0*\0\0\0\x08", 8), "PENTAX", "PENTAX K-99", 65535}},
    {RawKind::rw2, {QByteArray("IIU\0\x08\0\0\0", 8), "Panasonic", "DC-S99", 34316}},
};

constexpr qsizetype secondAt = 512;
constexpr qsizetype rawAt = 768;
constexpr qsizetype noteAt = 1024;
constexpr qsizetype previewAt = 2048;

void addPair(Directory& directory, std::uint16_t offsetTag, std::uint16_t lengthTag, qsizetype length) {
    directory.addLong(offsetTag, previewAt);
    directory.addLong(lengthTag, length);
}

/// The maker note of an ORF, whose offsets count from its own start.
QByteArray olympusNote(qsizetype previewLength) {
    Directory note;
    note.addLong(0x2020, 64);
    Directory settings;
    settings.addLong(0x0101, previewAt - noteAt);
    settings.addLong(0x0102, previewLength);
    QByteArray bytes = QByteArray("OM SYSTEM\0\0\0II\4\0", 16) + note.written(16, 0);
    place(bytes, 64, settings.written(64, 0));
    return bytes;
}

QByteArray tiffFile(RawKind kind, const RawOptions& options) {
    const TiffLayout& layout = tiffLayouts.at(kind);
    const bool isBigEndian = layout.header.startsWith("MM");
    const qsizetype length = options.preview.size();
    Directory first(isBigEndian);
    Directory second(isBigEndian);
    Directory raw(isBigEndian);
    first.addText(271, layout.make);
    first.addText(272, layout.model);
    first.addShorts(274, {static_cast<std::uint16_t>(options.orientation)});
    raw.addLong(256, 6048);
    raw.addLong(257, 4024);
    raw.addShorts(258, {14});
    raw.addShorts(259, {layout.rawCompression});
    raw.addShorts(262, {32803});
    raw.addLong(273, previewAt + length);
    raw.addLong(279, options.rawSize);

    qsizetype next = 0;
    qsizetype afterRaw = 0;
    if (kind == RawKind::arw) {
        addPair(first, 513, 514, length);
        first.addLong(330, rawAt);
    } else if (kind == RawKind::cr2) {
        first.addShorts(259, {6});
        addPair(first, 273, 279, length);
        next = rawAt;
    } else if (kind == RawKind::dng) {
        first.addBytes(50706, QByteArray("\1\7\0\0", 4));
        first.addLongs(330, {rawAt, secondAt});
        second.addShorts(259, {7});
        second.addShorts(262, {6});
        addPair(second, 273, 279, length);
    } else if (kind == RawKind::nef) {
        first.addLongs(330, {secondAt, rawAt});
        addPair(second, 513, 514, length);
    } else if (kind == RawKind::orf) {
        first.addLong(34665, secondAt);
        second.addElsewhere(37500, noteAt, 512);
    } else if (kind == RawKind::pef) {
        next = rawAt;
        afterRaw = secondAt;
        addPair(second, 513, 514, length);
    } else {
        first.addElsewhere(0x002E, previewAt, length);
    }

    QByteArray file = layout.header + first.written(layout.header.size(), next);
    place(file, secondAt, second.written(secondAt, 0));
    place(file, rawAt, raw.written(rawAt, afterRaw));
    place(file, noteAt, kind == RawKind::orf ? olympusNote(length) : QByteArray());
    place(file, previewAt, options.preview + rawData(options));
    return file;
}

QByteArray bigNumber(qsizetype value) {
    return tiffNumber(static_cast<std::uint32_t>(value), true);
}

QByteArray rafFile(const RawOptions& options) {
    QByteArray file("FUJIFILMCCD-RAW 0201FF999999X-T99");
    place(file, 84, bigNumber(148) + bigNumber(options.preview.size()));
    place(file, 148, options.preview + rawData(options));
    return file;
}

QByteArray box(const QByteArray& type, const QByteArray& payload) {
    return bigNumber(payload.size() + 8) + type + payload;
}

QByteArray cr3Boxes(const RawOptions& options, qsizetype mediaAt) {
    Directory directory;
    directory.addShorts(274, {static_cast<std::uint16_t>(options.orientation)});
    const QByteArray exif = QByteArray("II*\0\x08\0\0\0", 8) + directory.written(8, 0);
    const QByteArray sizes = box("stsz", bigNumber(0) + bigNumber(options.preview.size()) + bigNumber(1));
    const QByteArray offsets = box("co64", bigNumber(0) + bigNumber(1) + bigNumber(0) + bigNumber(mediaAt));
    const QByteArray track = box("trak", box("mdia", box("minf", box("stbl", sizes + offsets))));
    const QByteArray canon = QByteArray::fromHex("85c0b687820f11e08111f4ce462b6a48") + box("CMT1", exif);
    const QByteArray preview = QByteArray::fromHex("eaf42b5e1c984b88b9fbb7dc406e4d16") + QByteArray(8, '\0') +
                               box("PRVW", QByteArray(16, '\0') + options.smallPreview);
    return box("ftyp", "crx ") + box("moov", box("uuid", canon) + track) + box("uuid", preview);
}

} // namespace

QByteArray rawFile(RawKind kind, const RawOptions& options) {
    if (kind == RawKind::raf) {
        return rafFile(options);
    }
    if (kind == RawKind::cr3) {
        const qsizetype mediaAt = cr3Boxes(options, 0).size() + 8;
        return cr3Boxes(options, mediaAt) + box("mdat", options.preview + rawData(options));
    }
    return tiffFile(kind, options);
}

} // namespace ostrelle
