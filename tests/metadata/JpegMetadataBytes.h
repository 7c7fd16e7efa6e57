// SPDX-License-Identifier: GPL-3.0-or-later
#pragma once

#include "metadata/XMPWriter.h"
#include "standins/JpegBuilder.h"
#include "standins/SportsScene.h"
#include "standins/TiffBuilder.h"
#include "support/FileInFolder.h"

#include <gtest/gtest.h>

namespace ostrelle {

/// A JPEG image in a folder of its own, for one test.
class TemporaryImage : public FileInFolder {
public:
    explicit TemporaryImage(const QByteArray& bytes) : FileInFolder(QStringLiteral("IMG_0001.JPG"), bytes) {}
};

inline QByteArray bigEndian(auto value) {
    return tiffNumber(value, true);
}

inline QByteArray segment(quint8 marker, const QByteArray& payload) {
    return QByteArray(1, '\xFF') + static_cast<char>(marker) +
           bigEndian(static_cast<quint16>(payload.size() + 2)) + payload;
}

inline QByteArray dataSet(quint8 record, quint8 number, const QByteArray& value) {
    return QByteArray(1, '\x1C') + static_cast<char>(record) + static_cast<char>(number) +
           bigEndian(static_cast<quint16>(value.size())) + value;
}

/// A data set of the application record.
inline QByteArray iptc(quint8 number, const QByteArray& value) {
    return dataSet(2, number, value);
}

inline const QByteArray utf8Declared = dataSet(1, 90, "\x1B%G");

inline QByteArray photoshopResource(quint16 id, const QByteArray& data) {
    return "8BIM" + bigEndian(id) + QByteArray(2, '\0') + bigEndian(static_cast<quint32>(data.size())) +
           data + QByteArray(data.size() % 2, '\0');
}

inline QByteArray photoshopSegment(const QByteArray& content) {
    return segment(0xED, QByteArray("Photoshop 3.0\0", 14) + content);
}

inline QByteArray iptcSegment(const QByteArray& dataSets) {
    return photoshopSegment(photoshopResource(0x0404, dataSets));
}

inline QByteArray packetSegment(const QByteArray& packet) {
    return segment(0xE1, QByteArray("http://ns.adobe.com/xap/1.0/\0", 29) + packet);
}

struct TestEntry {
    quint16 tag;
    quint16 type; ///< 2 for text, 7 for undefined
    QByteArray value;
};

/// A directory at the offset, followed by its values.
inline QByteArray tiffDirectory(const QList<TestEntry>& entries, quint32 offset) {
    TiffDirectoryBuilder directory(true);
    for (const TestEntry& entry : entries) {
        directory.add(entry.tag, entry.type, entry.type == 4 ? 1 : entry.value.size(), entry.value);
    }
    return directory.written(offset, 0);
}

/// An EXIF segment; the second directory is left out if it has no entries.
inline QByteArray exifSegment(QList<TestEntry> first, const QList<TestEntry>& exif = {}) {
    constexpr quint32 begin = 8;
    if (!exif.isEmpty()) {
        first.append({0x8769, 4, bigEndian(quint32{0})});
        const auto size = static_cast<quint32>(tiffDirectory(first, begin).size());
        first.last().value = bigEndian(begin + size);
    }
    const QByteArray directory = tiffDirectory(first, begin);
    const auto exifBegin = begin + static_cast<quint32>(directory.size());
    return segment(0xE1, QByteArray("Exif\0\0MM\0*\0\0\0\x08", 14) + directory +
                             (exif.isEmpty() ? QByteArray() : tiffDirectory(exif, exifBegin)));
}

inline TestEntry description(const QByteArray& text) {
    return {0x010E, 2, text + '\0'};
}

inline TestEntry comment(const QByteArray& value) {
    return {0x9286, 7, value};
}

/// A small picture with the segments inserted after its first one.
inline QByteArray jpegWith(const QByteArray& segments) {
    static const QByteArray picture = jpegFile(SportsScene(64, 48, 1).image());
    constexpr qsizetype firstEnd = 20; // the JFIF segment
    return picture.first(firstEnd) + segments + picture.sliced(firstEnd);
}

inline MetadataReading readEmbedded(const QByteArray& jpeg) {
    const TemporaryImage file(jpeg);
    return XMPWriter().readEmbedded(file.path(), QTimeZone::utc());
}

} // namespace ostrelle
