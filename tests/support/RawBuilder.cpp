// SPDX-License-Identifier: GPL-3.0-or-later
#include "support/RawBuilder.h"

#include "support/SportsScene.h"
#include "support/TiffBuilder.h"

#include <algorithm>

namespace ostrelle {

namespace {

using Directory = TiffDirectoryBuilder;

// Where things stand in the files that are built as TIFF is
constexpr qsizetype secondDirectory = 512;
constexpr qsizetype thirdDirectory = 768;
constexpr qsizetype fourthDirectory = 1024;
constexpr qsizetype dataOffset = 2048;

QByteArray noise() {
    QByteArray bytes(20'000, Qt::Uninitialized);
    for (qsizetype i = 0; i < bytes.size(); ++i) {
        bytes[i] = static_cast<char>(static_cast<int>(255 * sceneNoise(9, static_cast<int>(i), 0)));
    }
    return bytes;
}

void place(QByteArray& file, qsizetype offset, const QByteArray& bytes) {
    file.resize(std::max(file.size(), offset + bytes.size()));
    file.replace(offset, bytes.size(), bytes);
}

/// A TIFF-like file under construction: its data stand behind its directories.
class TiffRaw {
public:
    TiffRaw(const RawOptions& options, const QByteArray& header, bool isBigEndian)
        : m_isBigEndian(isBigEndian)
        , m_options(options)
        , m_file(header + tiffNumber(static_cast<std::uint32_t>(header.size() + 4), isBigEndian)) {
        place(m_file, dataOffset, options.thumbnail + options.preview + noise());
    }

    Directory directory() const { return Directory(m_isBigEndian); }
    /// The first directory as most makers begin it.
    Directory firstDirectory(const QByteArray& make, const QByteArray& model) const {
        Directory first = directory();
        first.addText(271, make);
        first.addText(272, model);
        first.addShorts(274, {static_cast<std::uint16_t>(m_options.orientation)});
        return first;
    }
    Directory thumbnailDirectory() const {
        Directory thumbnail = directory();
        addJpeg(thumbnail, dataOffset, m_options.thumbnail.size());
        return thumbnail;
    }
    Directory previewDirectory() const {
        Directory preview = directory();
        addPreview(preview);
        return preview;
    }
    /// Data of sensors in a packing that is the maker's own.
    Directory rawDirectory(std::uint16_t compression) const {
        Directory raw = directory();
        raw.addLong(254, 0);
        raw.addLong(256, 6048);
        raw.addLong(257, 4024);
        raw.addShorts(258, {14});
        raw.addShorts(259, {compression});
        raw.addShorts(262, {32803});
        raw.addShorts(277, {1});
        raw.addLong(273, rawOffset());
        raw.addLong(279, m_file.size() - rawOffset());
        return raw;
    }
    void addPreview(Directory& directory) const {
        addJpeg(directory, previewOffset(), m_options.preview.size());
    }
    void addPreviewAsStrip(Directory& directory, std::uint16_t compression) const {
        directory.addShorts(259, {compression});
        directory.addLong(273, previewOffset());
        directory.addLong(279, m_options.preview.size());
    }

    qsizetype previewOffset() const { return dataOffset + m_options.thumbnail.size(); }
    qsizetype rawOffset() const { return previewOffset() + m_options.preview.size(); }

    void add(const Directory& directory, qsizetype offset, qsizetype next = 0) {
        place(m_file, offset, directory.written(offset, next));
    }
    void addBytes(qsizetype offset, const QByteArray& bytes) { place(m_file, offset, bytes); }
    QByteArray file() const { return m_file; }

private:
    static void addJpeg(Directory& directory, qsizetype offset, qsizetype length) {
        directory.addShorts(259, {6});
        directory.addLong(513, offset);
        directory.addLong(514, length);
    }

    bool m_isBigEndian;
    RawOptions m_options;
    QByteArray m_file;
};

QByteArray littleHeader() {
    return QByteArray("II*\0", 4);
}

QByteArray bigHeader() {
    return QByteArray("MM\0*", 4);
}

QByteArray arwFile(const RawOptions& options) {
    TiffRaw raw(options, littleHeader(), false);
    Directory first = raw.firstDirectory("SONY", "ILCE-99");
    raw.addPreview(first);
    first.addLong(330, thirdDirectory);
    raw.add(first, 8, secondDirectory);
    raw.add(raw.thumbnailDirectory(), secondDirectory);
    raw.add(raw.rawDirectory(32766), thirdDirectory);
    return raw.file();
}

QByteArray cr2File(const RawOptions& options) {
    // The directory of the raw data is named in the header too.
    TiffRaw raw(options, littleHeader(), false);
    raw.addBytes(4, tiffNumber(std::uint32_t{16}, false) + QByteArray("CR\2\0", 4) +
                        tiffNumber(static_cast<std::uint32_t>(thirdDirectory), false));
    Directory first = raw.firstDirectory("Canon", "Canon EOS 99D");
    raw.addPreviewAsStrip(first, 6);
    raw.add(first, 16, secondDirectory);
    raw.add(raw.thumbnailDirectory(), secondDirectory, thirdDirectory);
    raw.add(raw.rawDirectory(6), thirdDirectory);
    return raw.file();
}

QByteArray dngFileWithPreview(const RawOptions& options) {
    TiffRaw raw(options, littleHeader(), false);
    Directory first = raw.firstDirectory("Ostrelle", "Ostrelle Test Camera");
    first.addBytes(50706, QByteArray("\1\7\0\0", 4));
    first.addLongs(330, {secondDirectory, thirdDirectory});
    raw.add(first, 8);
    raw.add(raw.rawDirectory(52546), secondDirectory);
    Directory preview = raw.directory();
    preview.addLong(254, 1);
    preview.addShorts(262, {6});
    raw.addPreviewAsStrip(preview, 7);
    raw.add(preview, thirdDirectory);
    return raw.file();
}

QByteArray nefFile(const RawOptions& options) {
    TiffRaw raw(options, bigHeader(), true);
    Directory first = raw.firstDirectory("NIKON CORPORATION", "NIKON Z 99");
    first.addLongs(330, {secondDirectory, thirdDirectory});
    raw.add(first, 8);
    raw.add(raw.previewDirectory(), secondDirectory);
    raw.add(raw.rawDirectory(34713), thirdDirectory);
    return raw.file();
}

/// The offsets in the maker note count from its beginning.
QByteArray orfFile(const RawOptions& options) {
    constexpr qsizetype note = thirdDirectory;
    TiffRaw raw(options, "IIRO", false);
    Directory first = raw.firstDirectory("OM Digital Solutions", "OM-99");
    first.addLong(273, raw.rawOffset());
    first.addLong(34665, secondDirectory);
    raw.add(first, 8);
    Directory exif = raw.directory();
    exif.addElsewhere(37500, note, 512);
    raw.add(exif, secondDirectory);
    Directory makerNote = raw.directory();
    makerNote.addLong(0x2020, fourthDirectory - note);
    raw.addBytes(note, QByteArray("OM SYSTEM\0\0\0II\4\0", 16) + makerNote.written(16, 0));
    Directory settings = raw.directory();
    settings.addLong(0x0101, raw.previewOffset() - note);
    settings.addLong(0x0102, options.preview.size());
    raw.add(settings, fourthDirectory);
    return raw.file();
}

QByteArray pefFile(const RawOptions& options) {
    TiffRaw raw(options, bigHeader(), true);
    Directory first = raw.firstDirectory("PENTAX", "PENTAX K-99");
    first.addShorts(259, {65535});
    first.addLong(273, raw.rawOffset());
    raw.add(first, 8, secondDirectory);
    raw.add(raw.thumbnailDirectory(), secondDirectory, thirdDirectory);
    raw.add(raw.previewDirectory(), thirdDirectory);
    return raw.file();
}

QByteArray rafFile(const RawOptions& options) {
    constexpr qsizetype jpegOffset = 148;
    QByteArray file("FUJIFILMCCD-RAW 0201FF999999X-T99");
    place(file, 84,
          tiffNumber(static_cast<std::uint32_t>(jpegOffset), true) +
              tiffNumber(static_cast<std::uint32_t>(options.preview.size()), true));
    place(file, jpegOffset, options.preview + noise());
    return file;
}

QByteArray rw2File(const RawOptions& options) {
    TiffRaw raw(options, QByteArray("IIU\0", 4), false);
    Directory first = raw.firstDirectory("Panasonic", "DC-S99");
    first.addElsewhere(0x002E, raw.previewOffset(), options.preview.size());
    first.addLong(0x0118, raw.rawOffset());
    raw.add(first, 8);
    return raw.file();
}

QByteArray box(const QByteArray& type, const QByteArray& payload) {
    return tiffNumber(static_cast<std::uint32_t>(payload.size() + 8), true) + type + payload;
}

QByteArray bigNumber(qsizetype value) {
    return tiffNumber(static_cast<std::uint32_t>(value), true);
}

QByteArray track(qsizetype offset, qsizetype length) {
    const QByteArray sizes = box("stsz", bigNumber(0) + bigNumber(length) + bigNumber(1));
    const QByteArray offsets = box("co64", bigNumber(0) + bigNumber(1) + bigNumber(0) + bigNumber(offset));
    return box("trak", box("mdia", box("minf", box("stbl", sizes + offsets))));
}

QByteArray cr3Boxes(const RawOptions& options, qsizetype mediaOffset) {
    Directory directory;
    directory.addText(271, "Canon");
    directory.addText(272, "Canon EOS R99");
    directory.addShorts(274, {static_cast<std::uint16_t>(options.orientation)});
    const QByteArray exif = littleHeader() + tiffNumber(std::uint32_t{8}, false) + directory.written(8, 0);
    const QByteArray canon = QByteArray::fromHex("85c0b687820f11e08111f4ce462b6a48") + box("CMT1", exif);
    const QByteArray preview =
        QByteArray::fromHex("eaf42b5e1c984b88b9fbb7dc406e4d16") + bigNumber(0) + bigNumber(1) +
        box("PRVW",
            bigNumber(0) + QByteArray(8, '\0') + bigNumber(options.thumbnail.size()) + options.thumbnail);
    return box("ftyp", QByteArray("crx \0\0\0\1crx isom", 16)) +
           box("moov", box("uuid", canon) + track(mediaOffset, options.preview.size()) +
                           track(mediaOffset + options.preview.size(), noise().size())) +
           box("uuid", preview);
}

QByteArray cr3File(const RawOptions& options) {
    const qsizetype mediaOffset = cr3Boxes(options, 0).size() + 8;
    return cr3Boxes(options, mediaOffset) + box("mdat", options.preview + noise());
}

} // namespace

QByteArray rawFile(RawKind kind, const RawOptions& options) {
    switch (kind) {
    case RawKind::arw:
        return arwFile(options);
    case RawKind::cr2:
        return cr2File(options);
    case RawKind::cr3:
        return cr3File(options);
    case RawKind::dng:
        return dngFileWithPreview(options);
    case RawKind::nef:
        return nefFile(options);
    case RawKind::orf:
        return orfFile(options);
    case RawKind::pef:
        return pefFile(options);
    case RawKind::raf:
        return rafFile(options);
    case RawKind::rw2:
        break;
    }
    return rw2File(options);
}

} // namespace ostrelle
