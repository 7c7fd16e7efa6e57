// SPDX-License-Identifier: GPL-3.0-or-later
#include "metadata/jpeg/ExifCaptionEdit.h"

#include "metadata/bytes/TiffBlock.h"
#include "metadata/facts/MetadataText.h"
#include "metadata/jpeg/EditRefusal.h"

#include <algorithm>
#include <array>
#include <functional>
#include <optional>
#include <utility>

namespace ostrelle {

using namespace Qt::StringLiterals;

namespace {

/// The directories of a block that can be understood without the maker's documents. Throws EditRefusal for
/// damage that an edit could turn into something readers take for data.
class KnownDirectories {
public:
    explicit KnownDirectories(const TiffBlock& block) : m_block(block) {
        quint32 next = block.longAt(TiffBlock::firstDirectoryField);
        while (next != 0) {
            next = addWithThoseBelow(next);
        }
        refuseUnreadable();
    }

    /// The ranges of all tables and values except those of the given entries.
    std::vector<ByteRange> rangesWithout(const std::vector<TiffEntry>& left) const {
        std::vector<ByteRange> ranges = m_cutTables;
        for (const TiffDirectory& directory : m_all) {
            ranges.push_back(tableOf(directory));
            for (const TiffEntry& entry : directory.entries) {
                const bool isLeft = std::ranges::find(left, entry.at, &TiffEntry::at) != left.end();
                if (!isLeft && entry.valueSize() > 4) {
                    ranges.push_back(m_block.valueRange(entry));
                }
            }
            std::ranges::copy(pointedAt(directory), std::back_inserter(ranges));
        }
        return ranges;
    }

private:
    /// Returns the offset of the next directory.
    quint32 addWithThoseBelow(quint32 offset) {
        const TiffDirectory directory = add(offset);
        const TiffDirectory exif = addBelow(directory, tiff::exifDirectory);
        addBelow(exif, tiff::interoperabilityDirectory);
        addBelow(directory, tiff::gpsDirectory);
        return directory.next;
    }

    TiffDirectory addBelow(const TiffDirectory& directory, quint16 tag) {
        const std::optional<TiffEntry> pointer = directory.find(tag);
        return pointer ? add(m_block.longAt(pointer->at + 8)) : TiffDirectory();
    }

    /// Returns a directory without entries when there is none to read.
    TiffDirectory add(quint32 offset) {
        std::optional<TiffDirectory> directory = m_block.directory(offset);
        if (!directory && offset < TiffBlock::headerSize) {
            return {}; // bytes of the header, which an edit may change, are not a directory
        }
        if (!directory) {
            const qsizetype size = 2 + m_block.shortAt(offset) * TiffEntry::size;
            m_cutTables.push_back({offset, offset + size});
            return {};
        }
        const auto sharesTable = [&](const TiffDirectory& other) {
            return tableOf(other).overlaps(tableOf(*directory));
        };
        if (std::ranges::any_of(m_all, sharesTable)) { // this also breaks a ring of directories
            throw EditRefusal(u"its EXIF directories overlap"_s);
        }
        m_all.push_back(*directory);
        return std::move(*directory);
    }

    void refuseUnreadable() const {
        for (const TiffDirectory& directory : m_all) {
            for (const TiffEntry& entry : directory.entries) {
                const ByteRange value = m_block.valueRange(entry);
                const bool isReadable = entry.valueSize() > 4 && value.end <= m_block.bytes().size();
                if (isReadable && value.overlaps(tableOf(directory))) {
                    throw EditRefusal(u"an EXIF value lies in its own directory"_s);
                }
            }
            const bool hasUnknownType =
                !directory.entries.empty() && !directory.entries.front().isOfKnownType();
            if (hasUnknownType) { // to other tools, a sign that this is not a directory
                throw EditRefusal(u"an EXIF directory is damaged"_s);
            }
            for (const ByteRange& range : pointedAt(directory)) {
                if (range.end > m_block.bytes().size()) { // an edit would move it elsewhere in the file
                    throw EditRefusal(u"a thumbnail lies outside its EXIF segment"_s);
                }
            }
        }
    }

    /// Includes the offset of the next directory, which some writers omit at the end of the block.
    static ByteRange tableOf(const TiffDirectory& directory) {
        const auto count = static_cast<qsizetype>(directory.entries.size());
        return {directory.at, directory.at + 2 + count * TiffEntry::size + 4};
    }

    /// Pictures whose offset and length are values.
    std::vector<ByteRange> pointedAt(const TiffDirectory& directory) const {
        std::vector<ByteRange> ranges;
        for (const auto& [placeTag, lengthTag] : {std::pair(tiff::thumbnailOffset, tiff::thumbnailLength),
                                                  std::pair(tiff::stripOffsets, tiff::stripByteCounts)}) {
            const std::optional<TiffEntry> place = directory.find(placeTag);
            const std::optional<TiffEntry> length = directory.find(lengthTag);
            if (place && length && place->count == 1) {
                const qsizetype begin = m_block.longAt(place->at + 8);
                ranges.push_back({begin, begin + m_block.longAt(length->at + 8)});
            }
        }
        return ranges;
    }

    TiffBlock m_block;
    std::vector<TiffDirectory> m_all;
    std::vector<ByteRange> m_cutTables; ///< of directories that run past the end of the block
};

/// One write of a caption to one block.
class ExifCaptionEdit {
public:
    ExifCaptionEdit(QByteArrayView block, const QString& caption)
        : m_bytes(block.toByteArray()), m_caption(caption) {}

    QByteArray run() {
        const bool isBigEndian = block().isBigEndian();
        const qsizetype oldSize = m_bytes.size();
        const std::vector<TiffEntry> own = ownEntries();
        const std::vector<ByteRange> foreign = KnownDirectories(block()).rangesWithout(own);
        dropOldValuesAtTheEnd(own, foreign);
        ensureEntry(0, tiff::imageDescription);
        ensureExifDirectory();
        ensureEntry(exifPointer(), tiff::userComment);
        setValue(firstDirectory(), tiff::imageDescription, tiff::asciiType, m_caption.toUtf8() + '\0');
        setValue(exifDirectory(), tiff::userComment, tiff::undefinedType,
                 encodeUserComment(m_caption, isBigEndian));
        refuseWhatIsInsideNow(foreign, oldSize);
        return m_bytes;
    }

private:
    TiffBlock block() const {
        const std::optional<TiffBlock> opened = TiffBlock::open(m_bytes);
        if (!opened) {
            throw EditRefusal(u"its EXIF segment has no TIFF header"_s);
        }
        return *opened;
    }

    TiffDirectory firstDirectory() const {
        std::optional<TiffDirectory> directory = block().firstDirectory();
        if (!directory) {
            throw EditRefusal(u"an EXIF directory is damaged"_s);
        }
        return std::move(*directory);
    }

    TiffDirectory exifDirectory() const {
        std::optional<TiffDirectory> directory =
            block().directoryBelow(firstDirectory(), tiff::exifDirectory);
        if (!directory) {
            throw EditRefusal(u"an EXIF directory is damaged"_s);
        }
        return std::move(*directory);
    }

    /// The position of the EXIF directory's offset.
    qsizetype exifPointer() const { return firstDirectory().find(tiff::exifDirectory)->at + 8; }

    /// Discards the values of an earlier write, so that the file does not grow with every caption.
    void dropOldValuesAtTheEnd(const std::vector<TiffEntry>& own, const std::vector<ByteRange>& foreign) {
        const qsizetype oldSize = m_bytes.size();
        std::vector<ByteRange> values;
        for (const TiffEntry& entry : own) {
            if (entry.valueSize() > 4) {
                values.push_back(block().valueRange(entry));
            }
        }
        std::ranges::sort(values, std::ranges::greater(), &ByteRange::begin);
        for (const ByteRange& value : values) {
            const bool isLast = m_bytes.size() == value.end || m_bytes.size() == value.end + value.end % 2;
            const bool isShared = std::ranges::any_of(foreign, [&](const ByteRange& range) {
                return range.end <= oldSize && range.end > value.begin;
            });
            if (isLast && !isShared) {
                m_bytes.truncate(value.begin);
            }
        }
    }

    /// To readers, values past the end of the block did not exist. They must not appear inside the caption.
    void refuseWhatIsInsideNow(const std::vector<ByteRange>& foreign, qsizetype oldSize) const {
        const auto isInsideNow = [&](const ByteRange& range) {
            const bool beginsInside = range.begin >= oldSize && range.begin < m_bytes.size();
            return range.end > oldSize && (beginsInside || range.end <= m_bytes.size());
        };
        if (std::ranges::any_of(foreign, isInsideNow)) {
            throw EditRefusal(u"EXIF data lie outside their segment"_s);
        }
    }

    std::vector<TiffEntry> ownEntries() const {
        std::vector<TiffEntry> own = entriesOf(firstDirectory(), tiff::imageDescription);
        if (const auto exif = block().directoryBelow(firstDirectory(), tiff::exifDirectory)) {
            std::ranges::copy(entriesOf(*exif, tiff::userComment), std::back_inserter(own));
        }
        return own;
    }

    static std::vector<TiffEntry> entriesOf(const TiffDirectory& directory, quint16 tag) {
        std::vector<TiffEntry> found;
        std::ranges::copy_if(directory.entries, std::back_inserter(found),
                             [tag](const TiffEntry& entry) { return entry.tag == tag; });
        return found;
    }

    void ensureExifDirectory() {
        if (firstDirectory().find(tiff::exifDirectory)) {
            exifDirectory(); // refuses a damaged one
            return;
        }
        ensureEntry(0, tiff::exifDirectory);
        const quint32 place = beginAppending();
        m_bytes += tiffShort(0, block().isBigEndian()) + tiffLong(0, block().isBigEndian());
        const qsizetype entry = firstDirectory().find(tiff::exifDirectory)->at;
        putShort(entry + 2, tiff::longType);
        putLong(entry + 4, 1);
        putLong(entry + 8, place);
    }

    /// Adds an entry of the tag to the directory if it has none: a longer copy of its table goes to the end.
    /// `pointer` is the position of the directory's offset, 0 for the first directory.
    void ensureEntry(qsizetype pointer, quint16 tag) {
        const TiffDirectory directory = pointer == 0 ? firstDirectory() : exifDirectory();
        if (directory.find(tag)) {
            return;
        }
        const auto behind = std::ranges::find_if(directory.entries,
                                                 [tag](const TiffEntry& entry) { return entry.tag > tag; });
        const qsizetype index = behind - directory.entries.begin();
        const auto count = static_cast<qsizetype>(directory.entries.size());
        const bool isBigEndian = block().isBigEndian();
        const QByteArray table = m_bytes.sliced(directory.at + 2, count * TiffEntry::size);
        const qsizetype splitAt = index * TiffEntry::size;
        const quint32 place = beginAppending();
        m_bytes += tiffShort(static_cast<quint16>(count + 1), isBigEndian) + table.first(splitAt) +
                   tiffShort(tag, isBigEndian) + QByteArray(TiffEntry::size - 2, '\0') +
                   table.sliced(splitAt) + tiffLong(directory.next, isBigEndian);
        putLong(pointer == 0 ? TiffBlock::firstDirectoryField : pointer, place);
    }

    void setValue(const TiffDirectory& directory, quint16 tag, quint16 type, const QByteArray& value) {
        const bool isInline = value.size() <= 4;
        const quint32 place = isInline ? 0 : beginAppending();
        m_bytes += isInline ? QByteArray() : value;
        for (const TiffEntry& entry : entriesOf(directory, tag)) {
            putShort(entry.at + 2, type);
            putLong(entry.at + 4, static_cast<quint32>(value.size()));
            putLong(entry.at + 8, place);
            if (isInline) {
                m_bytes.replace(entry.at + 8, value.size(), value);
            }
        }
    }

    /// The offset for the next appended bytes; TIFF requires it to be even.
    quint32 beginAppending() {
        if (m_bytes.size() % 2 != 0) {
            m_bytes += '\0';
        }
        return static_cast<quint32>(m_bytes.size());
    }

    void putShort(qsizetype at, quint16 value) {
        m_bytes.replace(at, 2, tiffShort(value, block().isBigEndian()));
    }
    void putLong(qsizetype at, quint32 value) {
        m_bytes.replace(at, 4, tiffLong(value, block().isBigEndian()));
    }

    QByteArray m_bytes;
    QString m_caption;
};

/// A header and a first directory without entries.
constexpr QByteArrayView emptyBlock("MM\0*\0\0\0\x08\0\0\0\0\0\0", 14);

} // namespace

QByteArray withExifCaption(QByteArrayView block, const QString& caption) {
    QByteArray edited = ExifCaptionEdit(block.isEmpty() ? emptyBlock : block, caption).run();
    if (ExifCaptionEdit(edited, caption).run() != edited) {
        throw EditRefusal(u"its EXIF data would grow with each caption"_s);
    }
    return edited;
}

} // namespace ostrelle
