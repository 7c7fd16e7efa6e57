// SPDX-License-Identifier: GPL-3.0-or-later
#include "core/Error.h"
#include "metadata/JpegMetadataBytes.h"
#include "metadata/bytes/JpegSegments.h"
#include "metadata/jpeg/EmbeddedCaptionEdit.h"
#include "metadata/jpeg/EmbeddedMetadata.h"
#include "metadata/jpeg/XmpPacket.h"
#include "metadata/sidecar/SidecarCaptionEdit.h"
#include "metadata/xml/XmlDocument.h"
#include "platform/Files.h"
#include "support/Corpus.h"

#include <QStringBuilder>
#include <QXmlStreamReader>
#include <random>

namespace ostrelle {

using namespace Qt::StringLiterals;

namespace {

const QString caption = u"Zoë O'Neil <12> & 山田 \U0001F3C8"_s;
const QString dc = u"http://purl.org/dc/elements/1.1/"_s;

struct Reading {
    QStringList captions; ///< the x-default texts
    QStringList foreign;  ///< everything else, except what a write may add
};

/// What another parser reads; nothing if the bytes are not well formed.
std::optional<Reading> readWithOtherParser(const QByteArray& bytes) {
    QXmlStreamReader reader(bytes);
    Reading reading;
    bool isInCaption = false;
    while (!reader.atEnd()) {
        reader.readNext();
        const bool isBlock = reader.name() == u"RDF" || reader.name() == u"Description";
        if (reader.name() == u"description" && reader.namespaceUri() == dc) {
            isInCaption = reader.isStartElement();
        } else if (!isInCaption && !isBlock && !reader.isStartDocument()) {
            reading.foreign += QString(reader.qualifiedName() % reader.text());
        }
        for (const QXmlStreamAttribute& attribute : reader.attributes()) {
            if (isInCaption && attribute.value() == u"x-default") {
                reading.captions += reader.readElementText(QXmlStreamReader::IncludeChildElements);
            } else if (!isInCaption && attribute.name() != u"about" && attribute.name() != u"description") {
                reading.foreign += QString(attribute.qualifiedName() % attribute.value());
            }
        }
    }
    reading.foreign = {reading.foreign.join(QString()).simplified()};
    return reader.hasError() ? std::nullopt : std::optional(reading);
}

/// Truncated copies of the bytes and copies with a few bytes changed, the same in each run.
QByteArrayList damaged(const QByteArray& bytes) {
    std::mt19937 random(static_cast<unsigned>(bytes.size()));
    const auto below = [&random](qsizetype limit) { return static_cast<qsizetype>(random()) % limit; };
    const QByteArray letters("<>/&;\"'=:! -?]a\0\xC3\xFF", 18);
    QByteArrayList all;
    for (qsizetype place = 0; place < bytes.size(); place += 1 + bytes.size() / 16) {
        all.append(bytes.first(place + below(std::min(bytes.size() - place, 1 + bytes.size() / 16))));
        all.append(bytes);
        for (qsizetype changes = 1 + below(3); changes > 0; --changes) {
            all.last()[below(bytes.size())] = letters[below(letters.size())];
        }
    }
    return all;
}

/// The sidecar after our edit; nothing if the edit refuses it.
std::optional<QByteArray> edited(const QByteArray& sidecar) {
    try {
        const XmlDocument document = XmlDocument::parse(sidecar);
        return document.root() ? std::optional(withCaption(document, caption)) : std::nullopt;
    } catch (const Error&) {
        return std::nullopt;
    }
}

QByteArray packetOf(const QByteArray& jpeg) {
    const std::optional<JpegSegments> segments = JpegSegments::walk(jpeg);
    const auto packets = segments ? segments->all(JpegSegment::Kind::xmpPacket) : std::vector<JpegSegment>();
    return packets.empty() ? QByteArray() : packetText(contentOf(packets.front(), jpeg)).toByteArray();
}

} // namespace

TEST(DamagedXml, IsNeverCaptionedInASidecar) {
    const QStringList files = corpusFiles(u"sidecars"_s);
    SKIP_WITHOUT_CORPUS(files);
    int written = 0;
    for (const QString& path : files) {
        const QByteArray whole = readFile(path, XmlDocument::maximumSize);
        for (const QByteArray& sidecar : damaged(whole)) {
            SCOPED_TRACE(path.toStdString() + ", " + std::to_string(sidecar.size()));
            const std::optional<Reading> before = readWithOtherParser(sidecar);
            const std::optional<QByteArray> after = edited(sidecar);
            const bool isCut = sidecar.size() < whole.size();
            EXPECT_TRUE(isCut ? before.has_value() == after.has_value() : before || !after);
            if (before && after) {
                const std::optional<Reading> now = readWithOtherParser(*after);
                ASSERT_TRUE(now);
                EXPECT_EQ(now->captions.value(0), caption);
                EXPECT_EQ(now->foreign, before->foreign);
                ++written;
            }
        }
    }
    EXPECT_GT(written, 500);
}

TEST(DamagedXml, IsNeverReadOrCaptionedInAPacket) {
    const QStringList files = corpusFiles(u"jpeg"_s);
    SKIP_WITHOUT_CORPUS(files);
    int damagedPackets = 0;
    for (const QString& path : files) {
        for (const QByteArray& bytes : damaged(packetOf(readFile(path, XmlDocument::maximumSize)))) {
            SCOPED_TRACE(path.toStdString() + ", " + std::to_string(bytes.size()));
            const QByteArray jpeg = "\xFF\xD8" + packetSegment(bytes) + segment(0xDA, "scan");
            const std::optional<Reading> before = readWithOtherParser(packetOf(jpeg));
            EXPECT_TRUE(before || parseEmbeddedMetadata(jpeg)->iptc.isEmpty());
            try {
                const QByteArray packet = packetOf(withEmbeddedCaption(jpeg, caption));
                const std::optional<Reading> now = readWithOtherParser(packet);
                EXPECT_TRUE(before ? now && now->foreign == before->foreign : packet == packetOf(jpeg));
                EXPECT_TRUE(!before || before->captions.isEmpty() || now->captions.first() == caption);
            } catch (const Error&) {
                damagedPackets += before ? 0 : 1;
            }
        }
    }
    EXPECT_GT(damagedPackets, 200);
}

} // namespace ostrelle
