// SPDX-License-Identifier: GPL-3.0-or-later
#include "metadata/rendition/TiffContents.h"

#include "metadata/bytes/TiffBlock.h"

#include <QtEndian>
#include <algorithm>
#include <array>
#include <utility>

namespace ostrelle {

namespace {

constexpr std::size_t maximumDirectories = 64;
constexpr quint16 maximumEntries = 1024;
constexpr quint32 maximumBelow = 16; ///< directories below one

constexpr quint16 panasonicJpeg = 0x002E;
constexpr quint16 panasonicLargeJpeg = 0x0127;
constexpr quint16 compression = 0x0103;
constexpr quint16 photometric = 0x0106;
constexpr quint16 tileOffsets = 0x0144;
constexpr quint16 tileByteCounts = 0x0145;
constexpr quint16 directoriesBelow = 0x014A;
constexpr quint16 makerNote = 0x927C;

/// A directory in a block of its own, which starts with a header. Values that do not fit into their entries
/// are not in it.
struct LoneDirectory {
    QByteArray bytes;
    TiffBlock block;
    TiffDirectory entries;

    /// The number in the entry, or the offset of its value.
    quint32 number(const TiffEntry& entry) const {
        constexpr quint16 shortType = 3;
        return entry.type == shortType ? block.shortAt(entry.at + 8) : block.longAt(entry.at + 8);
    }
    std::optional<quint32> number(quint16 tag) const {
        const std::optional<TiffEntry> entry = entries.find(tag);
        return entry && entry->count == 1 ? std::optional(number(*entry)) : std::nullopt;
    }
};

/// Walks through the directories of one file, or of a maker note in it.
class TiffWalk {
public:
    TiffWalk(FileBytes& file, qint64 base, bool isBigEndian)
        : m_file(file)
        , m_base(base)
        , m_header(isBigEndian ? QByteArrayView("MM\0*\0\0\0\x08", 8)
                               : QByteArrayView("II*\0\x08\0\0\0", 8)) {}

    RawContents readAll(quint32 first);
    /// Adds the JPEG named in an Olympus maker note whose directory is at the offset.
    void readOlympus(quint32 first, RawContents& contents);

private:
    std::optional<LoneDirectory> directoryAt(quint32 offset);
    void visitLater(quint32 offset);
    void visitBelow(const LoneDirectory& directory);
    std::vector<quint32> numbers(const LoneDirectory& directory, quint16 tag);
    void addPieces(const LoneDirectory& directory, quint16 offsetsTag, quint16 lengthsTag,
                   RawContents& contents);
    void addJpegs(const LoneDirectory& directory, RawContents& contents);
    void addPair(const LoneDirectory& directory, quint16 offsetTag, quint16 lengthTag, RawContents& contents);
    void readMakerNote(const LoneDirectory& directory, RawContents& contents);

    FileBytes& m_file;
    qint64 m_base;
    QByteArrayView m_header;
    std::vector<quint32> m_offsets; ///< of directories visited or still to visit
};

std::optional<LoneDirectory> TiffWalk::directoryAt(quint32 offset) {
    const QByteArray countBytes = m_file.read(m_base + offset, 2);
    if (countBytes.isEmpty()) {
        return std::nullopt;
    }
    const QByteArray numbered = m_header.toByteArray() + countBytes;
    const quint16 count = TiffBlock::open(numbered)->shortAt(m_header.size());
    const QByteArray table =
        m_file.read(m_base + offset, 2 + count * TiffEntry::size + static_cast<qint64>(sizeof(quint32)));
    if (count > maximumEntries || table.isEmpty()) {
        return std::nullopt;
    }
    const QByteArray bytes = m_header.toByteArray() + table;
    const std::optional<TiffBlock> block = TiffBlock::open(bytes);
    std::optional<TiffDirectory> entries = block->firstDirectory();
    return entries ? std::optional(LoneDirectory{bytes, *block, *std::move(entries)}) : std::nullopt;
}

/// Directories may form a cycle.
void TiffWalk::visitLater(quint32 offset) {
    if (offset != 0 && m_offsets.size() < maximumDirectories &&
        std::ranges::find(m_offsets, offset) == m_offsets.end()) {
        m_offsets.push_back(offset);
    }
}

void TiffWalk::visitBelow(const LoneDirectory& directory) {
    const std::optional<TiffEntry> entry = directory.entries.find(directoriesBelow);
    if (!entry || entry->count > maximumBelow) {
        return;
    }
    if (entry->count == 1) {
        visitLater(directory.number(*entry));
        return;
    }
    const QByteArray offsets =
        m_header.toByteArray() + m_file.read(m_base + directory.number(*entry), 4 * qint64{entry->count});
    for (qsizetype at = m_header.size(); at < offsets.size(); at += 4) {
        visitLater(TiffBlock::open(offsets)->longAt(at));
    }
}

RawContents TiffWalk::readAll(quint32 first) {
    RawContents contents;
    visitLater(first);
    for (std::size_t i = 0; i < m_offsets.size(); ++i) {
        const std::optional<LoneDirectory> directory = directoryAt(m_offsets[i]);
        if (!directory) {
            continue;
        }
        if (i == 0 && directory->entries.find(orientationTag)) {
            contents.turn = turnOf(directory->block, directory->entries).value_or(PictureTurn());
        }
        addJpegs(*directory, contents);
        addPieces(*directory, tiff::stripOffsets, tiff::stripByteCounts, contents);
        addPieces(*directory, tileOffsets, tileByteCounts, contents);
        readMakerNote(*directory, contents);
        visitBelow(*directory);
        visitLater(directory->entries.next);
    }
    return contents;
}

/// The numbers of an entry, up to a limit; none if they are of another type.
std::vector<quint32> TiffWalk::numbers(const LoneDirectory& directory, quint16 tag) {
    constexpr quint32 most = 1 << 16;
    constexpr quint16 shortType = 3;
    const std::optional<TiffEntry> entry = directory.entries.find(tag);
    if (!entry || entry->count == 0 || entry->count > most ||
        (entry->type != shortType && entry->type != tiff::longType)) {
        return {};
    }
    const qint64 size = entry->type == shortType ? 2 : 4;
    const QByteArray bytes =
        entry->count * size <= 4
            ? directory.bytes.mid(entry->at + 8, entry->count * size)
            : m_file.read(m_base + directory.block.longAt(entry->at + 8), entry->count * size);
    const QByteArray numbered = m_header.toByteArray() + bytes;
    const std::optional<TiffBlock> block = TiffBlock::open(numbered);
    std::vector<quint32> numbers;
    for (qsizetype at = m_header.size(); at + size <= numbered.size(); at += size) {
        numbers.push_back(size == 2 ? block->shortAt(at) : block->longAt(at));
    }
    return numbers;
}

/// The strips or tiles of a picture.
void TiffWalk::addPieces(const LoneDirectory& directory, quint16 offsetsTag, quint16 lengthsTag,
                         RawContents& contents) {
    const std::vector<quint32> offsets = numbers(directory, offsetsTag);
    const std::vector<quint32> lengths = numbers(directory, lengthsTag);
    for (std::size_t i = 0; i < std::min(offsets.size(), lengths.size()); ++i) {
        contents.addRange(m_base + offsets[i], lengths[i]);
    }
}

void TiffWalk::addPair(const LoneDirectory& directory, quint16 offsetTag, quint16 lengthTag,
                       RawContents& contents) {
    const std::optional<quint32> offset = directory.number(offsetTag);
    const std::optional<quint32> length = directory.number(lengthTag);
    if (offset && length) {
        contents.addJpeg(m_file, m_base + *offset, *length);
    }
}

void TiffWalk::addJpegs(const LoneDirectory& directory, RawContents& contents) {
    addPair(directory, tiff::thumbnailOffset, tiff::thumbnailLength, contents);
    // In DNG, the raw data may itself be a JPEG of the sensor's values.
    const quint32 kind = directory.number(photometric).value_or(0);
    const quint32 packing = directory.number(compression).value_or(0);
    if ((packing == 6 || packing == 7) && kind != 32803 && kind != 34892) {
        addPair(directory, tiff::stripOffsets, tiff::stripByteCounts, contents);
    }
    for (const quint16 tag : {panasonicJpeg, panasonicLargeJpeg}) {
        const std::optional<TiffEntry> entry = directory.entries.find(tag);
        if (entry && entry->type == tiff::undefinedType) {
            contents.addJpeg(m_file, m_base + directory.number(*entry), entry->count);
        }
    }
}

/// Among maker notes, only those of Olympus and OM System point to a large JPEG.
void TiffWalk::readMakerNote(const LoneDirectory& directory, RawContents& contents) {
    const std::optional<quint32> exifOffset = directory.number(tiff::exifDirectory);
    const std::optional<LoneDirectory> exif = exifOffset ? directoryAt(*exifOffset) : std::nullopt;
    const std::optional<TiffEntry> entry = exif ? exif->entries.find(makerNote) : std::nullopt;
    if (!entry) {
        return;
    }
    const qint64 note = m_base + exif->number(*entry);
    const QByteArray start = m_file.read(note, 16);
    for (const QByteArrayView name :
         {QByteArrayView("OLYMPUS\0", 8), QByteArrayView("OM SYSTEM\0\0\0", 12)}) {
        if (start.startsWith(name)) {
            const bool isBigEndian = QByteArrayView(start).sliced(name.size()).startsWith("MM");
            TiffWalk(m_file, note, isBigEndian).readOlympus(static_cast<quint32>(name.size()) + 4, contents);
        }
    }
}

void TiffWalk::readOlympus(quint32 first, RawContents& contents) {
    constexpr quint16 cameraSettings = 0x2020;
    constexpr quint16 previewOffset = 0x0101;
    constexpr quint16 previewLength = 0x0102;
    const std::optional<LoneDirectory> note = directoryAt(first);
    const std::optional<TiffEntry> entry = note ? note->entries.find(cameraSettings) : std::nullopt;
    if (const auto settings = entry ? directoryAt(note->number(*entry)) : std::nullopt) {
        addPair(*settings, previewOffset, previewLength, contents);
    }
}

/// The first four bytes: TIFF's own, Olympus's two variants or Panasonic's.
bool isHeader(QByteArrayView bytes) {
    static constexpr std::array headers = {QByteArrayView("II*\0", 4), QByteArrayView("MM\0*", 4),
                                           QByteArrayView("IIRO"),     QByteArrayView("IIRS"),
                                           QByteArrayView("MMOR"),     QByteArrayView("IIU\0", 4)};
    return std::ranges::find(headers, bytes) != headers.end();
}

} // namespace

std::optional<RawContents> readTiffContents(FileBytes& file, qint64 base) {
    const QByteArray header = file.read(base, 8);
    if (header.isEmpty() || !isHeader(QByteArrayView(header).first(4))) {
        return std::nullopt;
    }
    const bool isBigEndian = header.startsWith("MM");
    const quint32 first = isBigEndian ? qFromBigEndian<quint32>(header.constData() + 4)
                                      : qFromLittleEndian<quint32>(header.constData() + 4);
    return TiffWalk(file, base, isBigEndian).readAll(first);
}

} // namespace ostrelle
