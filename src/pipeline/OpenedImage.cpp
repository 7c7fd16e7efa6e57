// SPDX-License-Identifier: GPL-3.0-or-later
#include "pipeline/OpenedImage.h"

#include "core/Text.h"
#include "metadata/ImageMetadata.h"
#include "metadata/xml/XmlDocument.h"
#include "pipeline/AudioNote.h"
#include "platform/Files.h"

#include <QFileInfo>
#include <QStringDecoder>
#include <algorithm>

namespace ostrelle {

using namespace Qt::StringLiterals;

namespace {

QString beginningOf(const QString& sidecar, const QString& name) {
    constexpr qsizetype shownCharacters = 2000;
    const QByteArray bytes = readFile(sidecar, XmlDocument::maximumSize);
    QStringDecoder decoder(QStringConverter::Utf8, QStringConverter::Flag::Stateless);
    QString text = decoder.decode(bytes);
    if (decoder.hasError()) {
        text = u"<non-UTF8 XMP>"_s;
    }
    // Counting characters scans the whole text, and a sidecar can be very long.
    const QStringView beginning = QStringView(text).first(std::min<qsizetype>(text.size(), 64 * 1024));
    const QString shown = firstCharacters(beginning, shownCharacters);
    return u"[Analyzer] XMP dump for %1 — size: %2 bytes; first %3 chars:\n%4"_s.arg(
        name, QString::number(bytes.size()), QString::number(characterCount(shown)), shown);
}

/// Also for the unused sidecar of a JPEG.
QString sidecarDump(const ImageMetadata& metadata, const QString& name) {
    const QString sidecar = metadata.sidecar();
    if (QFileInfo::exists(sidecar)) {
        const auto dump = attemptNow([&] { return beginningOf(sidecar, name); });
        return dump ? *dump : u"[Analyzer] Failed to dump XMP for %1: %2"_s.arg(name, dump.words());
    }
    return metadata.isEmbedded()
               ? u"[Analyzer] JPEG file %1 has no XMP sidecar (will use embedded metadata)"_s.arg(name)
               : QString();
}

EditableReading readMetadata(const ImageMetadata& metadata, ImageFile& image, const QTimeZone& zone,
                             const Opening& opening) {
    if (!opening.makesSidecar && metadata.lacksSidecar()) {
        EditableReading nothing;
        nothing.reading.image = image.stamp();
        return nothing;
    }
    return metadata.readEditable(image, zone);
}

} // namespace

OpenedImage openImage(const QString& file, const QTimeZone& zone, const Opening& opening,
                      const OpenedImage* ahead) {
    const ImageMetadata metadata(file);
    OpenedImage opened;
    opened.sidecar = attemptNow([&] { return opening.makesSidecar && metadata.provideSidecar(); });
    opened.conditions = EditConditions::of(file);
    opened.image = std::make_shared<ImageFile>(file);
    // What went wrong may be over, and reading ahead makes no sidecar.
    const bool wentWell = ahead && ahead->metadata && !ahead->metadata->refusal && !metadata.lacksSidecar();
    const bool isKnown = wentWell && ahead->conditions == opened.conditions;
    opened.metadata = isKnown
                          ? ahead->metadata
                          : attemptNow([&] { return readMetadata(metadata, *opened.image, zone, opening); });
    if (ahead && ahead->picture && ahead->picture->stamp == opened.conditions.image) {
        opened.picture = ahead->picture;
    }
    opened.audioNotes = audioNotesOf(file);
    if (opening.dumpsSidecar) {
        opened.sidecarDump = sidecarDump(metadata, QFileInfo(file).fileName());
    }
    return opened;
}

} // namespace ostrelle
