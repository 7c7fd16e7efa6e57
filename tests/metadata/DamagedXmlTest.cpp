// SPDX-License-Identifier: GPL-3.0-or-later
#include "metadata/EditRefusal.h"
#include "metadata/EmbeddedCaptionEdit.h"
#include "metadata/EmbeddedMetadata.h"
#include "metadata/JpegMetadataBytes.h"
#include "metadata/JpegSegments.h"
#include "metadata/SidecarCaptionEdit.h"
#include "metadata/XMPError.h"
#include "metadata/XmlDocument.h"
#include "metadata/XmlError.h"
#include "metadata/XmlOracle.h"
#include "metadata/XmpPacket.h"
#include "metadata/XmpQueries.h"
#include "platform/Files.h"
#include "support/Corpus.h"

#include <random>

namespace ostrelle {

using namespace Qt::StringLiterals;

namespace {

const QString caption = u"Zoë O'Neil <12> & 山田 \U0001F3C8"_s;

struct Damaged {
    QByteArray bytes;
    bool isCut = false;
};

struct Counts {
    int whole = 0;
    int refused = 0;
};

/// Cuts of the bytes, all of them when there are fewer than asked for, and as many copies with some of their
/// bytes changed. They are the same in each run.
std::vector<Damaged> damaged(const QByteArray& bytes, qsizetype count) {
    std::mt19937 random(static_cast<unsigned>(bytes.size()));
    const auto below = [&random](qsizetype limit) {
        return static_cast<qsizetype>(random() % static_cast<unsigned long>(limit));
    };
    const QByteArray letters("<>/&;\"'=:! -?]a\0\xC3\xFF", 18);
    std::vector<Damaged> all;
    const qsizetype cuts = std::min(count, bytes.size());
    for (qsizetype index = 0; index < cuts; ++index) {
        const qsizetype part = bytes.size() / cuts;
        all.push_back({bytes.first(index * part + below(part)), true});
        all.push_back({bytes});
        for (qsizetype changes = 1 + below(3); changes > 0; --changes) {
            all.back().bytes[below(bytes.size())] = letters[below(letters.size())];
        }
    }
    return all;
}

/// Another parser says whether the bytes are whole, and what an edit of whole ones did. It knows less of
/// names than ours: only of a cut does it know better what is whole.
void checkSidecar(const Damaged& sidecar, Counts& counts) {
    const QByteArray& bytes = sidecar.bytes;
    const std::optional<OracleReading> before = readWithOracle(bytes);
    QByteArray edited;
    try {
        const XmlDocument document = XmlDocument::parse(bytes);
        defaultCaption(document);
        if (!document.root()) {
            throw XMPError(XMPError::Case::noPacket);
        }
        edited = withCaption(document, caption);
    } catch (const XmlError& error) {
        ++counts.refused;
        EXPECT_FALSE(sidecar.isCut && before && error.localizedDescription().contains(u"well formed"_s));
        return;
    } catch (const XMPError& error) {
        ++counts.refused;
        EXPECT_FALSE(before && error.kind() == XMPError::Case::noPacket);
        return;
    }
    ++counts.whole;
    const std::optional<OracleReading> after = readWithOracle(edited);
    ASSERT_TRUE(before) << "what is not well formed was accepted";
    ASSERT_TRUE(after) << "the edit is not well formed";
    EXPECT_EQ(after->caption, caption);
    EXPECT_EQ(after->foreign.toStdString(), before->foreign.toStdString());
}

QByteArray packetOf(const QByteArray& jpeg) {
    const std::optional<JpegSegments> segments = JpegSegments::walk(jpeg);
    const auto packets = segments ? segments->all(JpegSegment::Kind::xmpPacket) : std::vector<JpegSegment>();
    return packets.empty() ? QByteArray() : packetText(contentOf(packets.front(), jpeg)).toByteArray();
}

void checkPacket(const Damaged& damagedPacket, Counts& counts) {
    const QByteArray& packet = damagedPacket.bytes;
    const QByteArray scan = segment(0xDA, "scan");
    const QByteArray jpeg = "\xFF\xD8" + packetSegment(packet) + scan;
    const std::optional<OracleReading> before = readWithOracle(packetOf(jpeg));
    counts.whole += before ? 1 : 0;
    if (!before) {
        EXPECT_EQ(parseEmbeddedMetadata(jpeg)->iptc.keys(), QStringList());
    }
    QByteArray edited;
    try {
        edited = withEmbeddedCaption(jpeg, caption);
    } catch (const EditRefusal& refusal) {
        ++counts.refused;
        EXPECT_FALSE(damagedPacket.isCut && before && refusal.localizedDescription().contains(u"damaged"_s));
        return;
    }
    const std::optional<OracleReading> after = readWithOracle(packetOf(edited));
    EXPECT_EQ(bool(after), bool(before));
    EXPECT_TRUE(before || packetOf(edited) == packetOf(jpeg)) << "what is not well formed was edited";
    if (before && after) {
        EXPECT_EQ(after->foreign.toStdString(), before->foreign.toStdString());
        EXPECT_EQ(after->caption, before->caption ? caption : before->caption);
    }
}

} // namespace

TEST(DamagedXml, IsNeverCaptionedInASidecar) {
    const QStringList files = corpusFiles(u"sidecars"_s);
    SKIP_WITHOUT_CORPUS(files);
    Counts counts;
    for (const QString& path : files) {
        for (const Damaged& sidecar : damaged(readFile(path, XmlDocument::maximumSize), 16)) {
            SCOPED_TRACE(path.toStdString() + ", " + std::to_string(sidecar.bytes.size()));
            checkSidecar(sidecar, counts);
        }
    }
    std::printf("%d whole, %d refused\n", counts.whole, counts.refused);
    EXPECT_GT(counts.whole, 300);
    EXPECT_GT(counts.refused, 2'000);
}

TEST(DamagedXml, IsNeverCaptionedInAPacket) {
    const QStringList files = corpusFiles(u"jpeg"_s);
    SKIP_WITHOUT_CORPUS(files);
    Counts counts;
    for (const QString& path : files) {
        const QByteArray packet = packetOf(readFile(path, XmlDocument::maximumSize));
        for (const Damaged& damagedPacket : damaged(packet, 12)) {
            SCOPED_TRACE(path.toStdString() + ", " + std::to_string(damagedPacket.bytes.size()));
            checkPacket(damagedPacket, counts);
        }
    }
    std::printf("%d whole, %d refused\n", counts.whole, counts.refused);
    EXPECT_GT(counts.whole, 100);
    EXPECT_GT(counts.refused, 100);
}

} // namespace ostrelle
