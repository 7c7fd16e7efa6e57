// SPDX-License-Identifier: GPL-3.0-or-later
#include "metadata/jpeg/EmbeddedReading.h"

#include "core/Text.h"
#include "metadata/facts/MetadataDates.h"
#include "metadata/xml/XmpQueries.h"
#include "platform/KeptLines.h"

#include <array>
#include <utility>

namespace ostrelle {

using namespace Qt::StringLiterals;

namespace {

void say(PlainLog& log, const QString& words) {
    log.print(u"[XMPWriter] "_s + words);
}

/// A field to fall back on when the file has no IPTC data.
struct FallbackField {
    QString label;
    std::optional<QString> value;
    QString wordsWhenMissing;
};

std::optional<QString> captionFrom(const FallbackField& field, QStringList& blank, PlainLog& log) {
    if (!field.value) {
        say(log, field.wordsWhenMissing);
        return std::nullopt;
    }
    const QString length = QString::number(characterCount(*field.value));
    QString trimmed = field.value->trimmed();
    say(log, field.label + u" found: \""_s + *field.value + u"\" (raw length: "_s + length +
                 u", trimmed length: "_s + QString::number(characterCount(trimmed)) + u')');
    if (trimmed.isEmpty()) {
        blank.append(field.label + u": \""_s + *field.value + u"\" (raw: "_s + length + u" chars)"_s);
        return std::nullopt;
    }
    return trimmed;
}

std::array<FallbackField, 2> fallbackFields(const EmbeddedMetadata& metadata) {
    return {FallbackField{u"TIFF Image Description"_s,
                          metadata.tiff ? metadata.tiff->imageDescription : std::nullopt,
                          metadata.tiff ? u"TIFF dictionary exists but no Image Description field"_s
                                        : u"No TIFF dictionary in metadata"_s},
            FallbackField{u"EXIF User Comment"_s, metadata.exif ? metadata.exif->userComment : std::nullopt,
                          metadata.exif ? u"EXIF dictionary exists but no User Comment field"_s
                                        : u"No EXIF dictionary in metadata"_s}};
}

QString captionFromIptc(const EmbeddedMetadata& metadata, PlainLog& log) {
    const std::optional<QString> raw = metadata.iptcText(u"Caption/Abstract"_s);
    if (!raw) {
        say(log, u"IPTC dictionary exists but no Caption Abstract field - treating as cleared/empty"_s);
        return u""_s;
    }
    const QString trimmed = raw->trimmed();
    say(log, u"IPTC Caption Abstract found: \""_s + *raw + u"\" (raw length: "_s +
                 QString::number(characterCount(*raw)) + u", trimmed length: "_s +
                 QString::number(characterCount(trimmed)) + u", isEmpty: "_s +
                 (trimmed.isEmpty() ? u"true"_s : u"false"_s) + u')');
    return trimmed.isEmpty() ? u""_s : trimmed;
}

std::optional<QString> trimmedOf(const std::optional<QString>& text) {
    return text ? trimmedOrNothing(*text) : std::nullopt;
}

/// The texts in the fields, other than the IPTC records, that captions are written to.
QStringList otherCaptions(const EmbeddedMetadata& metadata) {
    return {metadata.packetCaption.value_or(QString()),
            metadata.tiff ? metadata.tiff->imageDescription.value_or(QString()) : QString(),
            metadata.exif ? metadata.exif->userComment.value_or(QString()) : QString()};
}

/// The first value that is not blank.
std::optional<QString> firstOf(std::initializer_list<std::optional<QString>> values) {
    for (const std::optional<QString>& value : values) {
        if (std::optional<QString> trimmed = trimmedOf(value)) {
            return trimmed;
        }
    }
    return std::nullopt;
}

/// Gathers a context from a file's metadata and logs each field it finds.
class ContextReading {
public:
    ContextReading(const EmbeddedMetadata& metadata, const QTimeZone& zone, PlainLog& log)
        : m_metadata(metadata), m_zone(zone), m_log(log) {}

    XMPContext run() {
        if (!m_metadata.iptc.isEmpty()) {
            readIptc();
        }
        if (m_metadata.exif) {
            readDate(u"EXIF DateTimeOriginal"_s, m_metadata.exif->dateTimeOriginal);
        }
        if (m_metadata.tiff) {
            readDate(u"TIFF DateTime"_s, m_metadata.tiff->dateTime);
        }
        say(m_log, contextIsEmpty(m_context) ? u"No context found in JPEG embedded metadata"_s
                                             : u"JPEG context extracted: "_s + contextDescription(m_context));
        return std::move(m_context);
    }

private:
    void readIptc() {
        say(m_log, u"IPTC dictionary keys found: "_s + m_metadata.iptc.keys().join(u", "_s));
        m_context.city = field(u"City"_s, u"IPTC City"_s);
        m_context.state = field(u"Province/State"_s, u"IPTC State/Province"_s);
        m_context.country = field(u"Country/PrimaryLocationName"_s, u"IPTC Country"_s);
        m_context.location = field(u"Sub-location"_s, u"IPTC Sublocation"_s);
        // Unlike in a sidecar, headline and title come before the event: ingest tools fill these.
        m_context.event = field(u"Headline"_s, u"IPTC Headline"_s);
        if (!m_context.event) {
            m_context.event = field(u"ObjectName"_s, u"IPTC ObjectName"_s);
        }
        if (!m_context.event) {
            m_context.event = field(u"Event"_s, u"IPTC Event (string key)"_s);
        }
        readDate(u"IPTC DateCreated"_s, m_metadata.iptcText(u"DateCreated"_s));
        readKeywords();
    }

    std::optional<QString> field(const QString& name, const QString& label) {
        std::optional<QString> value = trimmedOf(m_metadata.iptcText(name));
        if (value) {
            say(m_log, label + u" found: "_s + *value);
        }
        return value;
    }

    /// Each is tried only when those before gave no date.
    void readDate(const QString& label, const std::optional<QString>& stored) {
        const std::optional<QString> raw = trimmedOf(stored);
        if (raw && !m_context.dateISO8601) {
            m_context.dateISO8601 = normalizeDate(*raw, m_zone);
            say(m_log, label + u" found: "_s + *raw + u" -> "_s + *m_context.dateISO8601);
        }
    }

    void readKeywords() {
        for (const QString& keyword : m_metadata.iptc.value(u"Keywords"_s)) {
            if (const std::optional<QString> trimmed = trimmedOrNothing(keyword)) {
                m_context.keywords.append(*trimmed);
            }
        }
        if (!m_context.keywords.isEmpty()) {
            say(m_log, u"IPTC Keywords found: %1 keywords"_s.arg(m_context.keywords.size()));
        }
    }

    const EmbeddedMetadata& m_metadata;
    const QTimeZone& m_zone;
    PlainLog& m_log;
    XMPContext m_context;
};

} // namespace

std::optional<QString> embeddedCaption(const EmbeddedMetadata& metadata, PlainLog& log) {
    if (!metadata.iptc.isEmpty()) {
        return captionFromIptc(metadata, log);
    }
    say(log, u"No IPTC dictionary in metadata - checking fallback fields"_s);
    QStringList blank;
    for (const FallbackField& field : fallbackFields(metadata)) {
        if (std::optional<QString> caption = captionFrom(field, blank, log)) {
            return caption;
        }
    }
    say(log, blank.isEmpty() ? u"No caption metadata fields found in JPEG"_s
                             : u"Found fallback metadata fields but all were empty after trimming: "_s +
                                   blank.join(u"; "_s));
    return std::nullopt;
}

XMPContext embeddedContext(const EmbeddedMetadata& metadata, const QTimeZone& zone, PlainLog& log) {
    return ContextReading(metadata, zone, log).run();
}

std::optional<QString> embeddedRights(const EmbeddedMetadata& metadata) {
    return firstOf({metadata.iptcText(u"CopyrightNotice"_s),
                    metadata.exif ? metadata.exif->userComment : std::nullopt,
                    metadata.tiff ? metadata.tiff->copyright : std::nullopt});
}

std::optional<QString> embeddedCreator(const EmbeddedMetadata& metadata) {
    return firstOf({metadata.iptcText(u"Byline"_s), metadata.contactName,
                    metadata.tiff ? metadata.tiff->artist : std::nullopt});
}

MetadataReading embeddedReading(const EmbeddedMetadata& metadata, const QTimeZone& zone) {
    KeptLines captionLines;
    KeptLines contextLines;
    MetadataReading reading;
    reading.facts = {.caption = embeddedCaption(metadata, captionLines),
                     .otherCaptions = otherCaptions(metadata),
                     .context = embeddedContext(metadata, zone, contextLines),
                     .rights = embeddedRights(metadata),
                     .creator = embeddedCreator(metadata)};
    reading.captionLines = captionLines.lines();
    reading.contextLines = contextLines.lines();
    return reading;
}

} // namespace ostrelle
