// SPDX-License-Identifier: GPL-3.0-or-later
#include "metadata/jpeg/IptcRecords.h"

#include "metadata/facts/MetadataText.h"
#include "metadata/jpeg/EditRefusal.h"

#include <QtEndian>
#include <algorithm>
#include <array>
#include <optional>
#include <utility>

namespace ostrelle {

using namespace Qt::StringLiterals;

namespace {

constexpr char tagMarker = 0x1C;
constexpr qsizetype headerSize = 5;
/// Limits time and memory; no program writes a tenth of it.
constexpr std::size_t maximumDataSets = 10'000;
constexpr quint8 envelopeRecord = 1;
constexpr quint8 charsetNumber = 90;
constexpr QByteArrayView utf8Escape = "\x1B%G";

struct Lengths {
    qsizetype header = headerSize;
    qsizetype value = 0;
};

/// The lengths in the data set at the start of the bytes; nothing when it is not one, or not complete.
std::optional<Lengths> lengthsOf(QByteArrayView bytes) {
    if (bytes.size() < headerSize || bytes[0] != tagMarker) {
        return std::nullopt;
    }
    Lengths lengths{.value = qFromBigEndian<quint16>(bytes.data() + 3)};
    if (lengths.value >= 0x8000) { // an extended data set: the length of its length
        const qsizetype count = lengths.value & 0x7FFF;
        if (count > 4 || bytes.size() < headerSize + count) {
            return std::nullopt;
        }
        lengths = {.header = headerSize + count, .value = 0};
        for (const char byte : bytes.sliced(headerSize, count)) {
            lengths.value = lengths.value << 8 | static_cast<quint8>(byte);
        }
    }
    return lengths.value <= bytes.size() - lengths.header ? std::optional(lengths) : std::nullopt;
}

IptcDataSet dataSet(quint8 record, quint8 number, const QByteArray& value) {
    const QByteArray tag{std::array{tagMarker, static_cast<char>(record), static_cast<char>(number)}.data(),
                         3};
    const bool isExtended = value.size() >= 0x8000;
    QByteArray length(isExtended ? 6 : 2, Qt::Uninitialized);
    if (isExtended) {
        qToBigEndian(quint16{0x8004}, length.data());
        qToBigEndian(static_cast<quint32>(value.size()), length.data() + 2);
    } else {
        qToBigEndian(static_cast<quint16>(value.size()), length.data());
    }
    return {record, number, value, tag + length + value};
}

} // namespace

bool IptcDataSet::isText() const {
    return record == IptcRecords::applicationRecord &&
           ((number >= 3 && number <= 122) || (number >= 130 && number <= 135) ||
            (number >= 184 && number <= 188));
}

IptcRecords IptcRecords::parse(QByteArrayView bytes) {
    IptcRecords records;
    while (records.m_dataSets.size() < maximumDataSets) {
        const std::optional<Lengths> lengths = lengthsOf(bytes);
        if (!lengths) {
            break;
        }
        const qsizetype size = lengths->header + lengths->value;
        records.m_dataSets.push_back({static_cast<quint8>(bytes[1]), static_cast<quint8>(bytes[2]),
                                      bytes.sliced(lengths->header, lengths->value).toByteArray(),
                                      bytes.first(size).toByteArray()});
        bytes = bytes.sliced(size);
    }
    records.m_rest = bytes.toByteArray();
    return records;
}

QByteArray IptcRecords::bytes() const {
    QByteArray all;
    for (const IptcDataSet& dataSet : m_dataSets) {
        all += dataSet.raw;
    }
    return all + m_rest;
}

IptcRecords::Charset IptcRecords::charset() const {
    const auto declared = std::ranges::find_if(m_dataSets, [](const IptcDataSet& dataSet) {
        return dataSet.isCharset() && !dataSet.value.trimmed().isEmpty();
    });
    if (declared == m_dataSets.end()) {
        return Charset::undeclared;
    }
    if (declared->value.contains(utf8Escape)) {
        return Charset::utf8;
    }
    const bool isLatin1 = declared->value.contains("\x1B.A") || declared->value.contains("\x1B-A");
    return isLatin1 ? Charset::latin1 : Charset::unknown;
}

QString IptcRecords::text(const IptcDataSet& dataSet) const {
    return charset() == Charset::latin1 ? decodeWindows1252(dataSet.value) : decodeUndeclared(dataSet.value);
}

bool IptcRecords::hasCaption() const {
    return std::ranges::any_of(
        m_dataSets, [](const IptcDataSet& dataSet) { return dataSet.is(applicationRecord, captionNumber); });
}

void IptcRecords::setCaption(const QString& caption) {
    if (m_dataSets.size() == maximumDataSets) { // the unread rest may hold a caption
        throw EditRefusal(u"it has too many IPTC data sets"_s);
    }
    const auto isCaption = [](const IptcDataSet& dataSet) {
        return dataSet.is(applicationRecord, captionNumber);
    };
    if (!isAscii(caption)) {
        const auto old = std::ranges::find_if(m_dataSets, isCaption);
        if (old != m_dataSets.end()) {
            old->value.clear(); // saves converting it
        }
        declareUtf8();
    }
    IptcDataSet written = dataSet(applicationRecord, captionNumber, caption.toUtf8());
    const auto first = std::ranges::find_if(m_dataSets, isCaption);
    if (first == m_dataSets.end()) {
        insert(std::move(written));
        return;
    }
    *first = std::move(written);
    m_dataSets.erase(std::remove_if(std::next(first), m_dataSets.end(), isCaption), m_dataSets.end());
}

bool IptcRecords::hasForeignText() const {
    return std::ranges::any_of(
        m_dataSets, [](const IptcDataSet& dataSet) { return dataSet.isText() && !isAscii(dataSet.value); });
}

void IptcRecords::becomeUtf8() {
    if (hasForeignText()) {
        declareUtf8();
    }
}

void IptcRecords::declareUtf8() {
    if (charset() == Charset::utf8) {
        return;
    }
    if (charset() == Charset::unknown && hasForeignText()) {
        throw EditRefusal(u"its IPTC texts are in an unknown encoding"_s);
    }
    for (IptcDataSet& stored : m_dataSets) {
        if (stored.isText() && !isAscii(stored.value)) {
            stored = dataSet(stored.record, stored.number, text(stored).toUtf8());
        }
    }
    std::erase_if(m_dataSets, [](const IptcDataSet& stored) { return stored.isCharset(); });
    insert(dataSet(envelopeRecord, charsetNumber, utf8Escape.toByteArray()));
}

/// Data sets are ordered by number, except where the file already has another order.
void IptcRecords::insert(IptcDataSet added) {
    const auto key = [](const IptcDataSet& dataSet) { return std::pair(dataSet.record, dataSet.number); };
    const auto behind =
        std::ranges::find_if(m_dataSets, [&](const IptcDataSet& stored) { return key(stored) > key(added); });
    m_dataSets.insert(behind, std::move(added));
}

} // namespace ostrelle
