// SPDX-License-Identifier: GPL-3.0-or-later
#include "metadata/rendition/Cr3Contents.h"

#include "metadata/rendition/TiffContents.h"

#include <QtEndian>
#include <algorithm>
#include <utility>

namespace ostrelle {

namespace {

constexpr int maximumBoxes = 1000;
constexpr int maximumDepth = 8;

/// The content of a box of the ISO base media file format.
struct Box {
    QByteArray type;
    qint64 begin = 0;
    qint64 end = 0;
    qint64 size = 0; ///< of the whole box, as it says
};

/// Walks through the boxes of one file. The preview is in a box of Canon's own; the JPEG of the full picture
/// is the first sample of a track, among tracks of raw data.
class BoxWalk {
public:
    explicit BoxWalk(FileBytes& file) : m_file(file) {}

    RawContents readAll() {
        walk(0, m_file.size(), 0);
        return std::move(m_contents);
    }

private:
    std::optional<Box> boxAt(qint64 offset, qint64 end);
    void walk(qint64 begin, qint64 end, int depth);
    void read(const Box& box, int depth);
    void readCanon(const Box& box, int depth);
    void readTrack(const Box& track, int depth);
    quint32 longAt(qint64 offset);
    quint64 longLongAt(qint64 offset);

    FileBytes& m_file;
    RawContents m_contents;
    int m_boxes = 0;
    qint64 m_sampleOffset = 0; ///< of the current track's first sample
    qint64 m_sampleSize = 0;
};

quint32 BoxWalk::longAt(qint64 offset) {
    const QByteArray bytes = m_file.read(offset, 4);
    return bytes.isEmpty() ? 0 : qFromBigEndian<quint32>(bytes.constData());
}

quint64 BoxWalk::longLongAt(qint64 offset) {
    return quint64{longAt(offset)} << 32 | longAt(offset + 4);
}

/// A size of 1 means 64 bits after the type; 0 means the rest of the file.
std::optional<Box> BoxWalk::boxAt(qint64 offset, qint64 end) {
    const bool isLarge = longAt(offset) == 1;
    const qint64 header = isLarge ? 16 : 8;
    const quint64 stored = isLarge ? longLongAt(offset + 8) : longAt(offset);
    const auto left = static_cast<quint64>(end - offset);
    const quint64 size = stored == 0 ? left : stored;
    if (size < static_cast<quint64>(header) || ++m_boxes > maximumBoxes) {
        return std::nullopt;
    }
    // A truncated file has its last box truncated too.
    return Box{m_file.read(offset + 4, 4), offset + header,
               offset + static_cast<qint64>(std::min(size, left)),
               static_cast<qint64>(std::min(size, quint64{1} << 40))};
}

void BoxWalk::walk(qint64 begin, qint64 end, int depth) {
    while (end - begin >= 8 && depth < maximumDepth) {
        const std::optional<Box> box = boxAt(begin, end);
        if (!box) {
            return;
        }
        if (depth == 0) {
            m_contents.addRange(begin, box->size);
        }
        read(*box, depth);
        begin = box->end;
    }
}

void BoxWalk::read(const Box& box, int depth) {
    if (box.type == "moov" || box.type == "mdia" || box.type == "minf" || box.type == "stbl") {
        walk(box.begin, box.end, depth + 1);
    } else if (box.type == "trak") {
        readTrack(box, depth);
    } else if (box.type == "uuid") {
        readCanon(box, depth);
    } else if (box.type == "CMT1") {
        if (const auto directory = readTiffContents(m_file, box.begin)) {
            m_contents.turn = directory->turn;
        }
    } else if (box.type == "PRVW") {
        constexpr qint64 jpegOffset = 16; // after the size in pixels and in bytes
        m_contents.addJpeg(m_file, box.begin + jpegOffset, box.end - box.begin - jpegOffset);
    } else if (box.type == "stsz") {
        // One size for all samples, or 0 and then a table.
        const quint32 size = longAt(box.begin + 4);
        m_sampleSize = size != 0 ? size : longAt(box.begin + 12);
    } else if (box.type == "stco") {
        m_sampleOffset = longAt(box.begin + 8);
    } else if (box.type == "co64") {
        m_sampleOffset = static_cast<qint64>(longLongAt(box.begin + 8));
    }
}

/// Two boxes of Canon's own contain further boxes, one of them after an eight-byte header.
void BoxWalk::readCanon(const Box& box, int depth) {
    const QByteArray identifier = m_file.read(box.begin, 16).toHex();
    if (identifier == "85c0b687820f11e08111f4ce462b6a48") {
        walk(box.begin + 16, box.end, depth + 1);
    } else if (identifier == "eaf42b5e1c984b88b9fbb7dc406e4d16") {
        walk(box.begin + 24, box.end, depth + 1);
    }
}

void BoxWalk::readTrack(const Box& track, int depth) {
    m_sampleOffset = m_sampleSize = 0;
    walk(track.begin, track.end, depth + 1);
    m_contents.addJpeg(m_file, m_sampleOffset, m_sampleSize);
}

} // namespace

std::optional<RawContents> readCr3Contents(FileBytes& file) {
    if (file.read(4, 8) != "ftypcrx ") {
        return std::nullopt;
    }
    return BoxWalk(file).readAll();
}

} // namespace ostrelle
