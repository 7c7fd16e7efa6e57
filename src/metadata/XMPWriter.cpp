// SPDX-License-Identifier: GPL-3.0-or-later
#include "metadata/XMPWriter.h"

#include "metadata/facts/XMPError.h"
#include "metadata/jpeg/EmbeddedCaptionWrite.h"
#include "metadata/jpeg/EmbeddedReading.h"
#include "metadata/sidecar/SidecarCaptionEdit.h"
#include "metadata/sidecar/SidecarReading.h"
#include "metadata/xml/XmlDocument.h"
#include "metadata/xml/XmpQueries.h"
#include "platform/FileError.h"
#include "platform/Files.h"
#include "platform/KeptLines.h"
#include "platform/SettledReading.h"
#include "platform/WriteCheck.h"

#include <QFileInfo>
#include <cerrno>
#include <exception>
#include <optional>

namespace ostrelle {

using namespace Qt::StringLiterals;

namespace {

constexpr QByteArrayView sidecarTemplate =
    "<?xpacket begin=\"\" id=\"W5M0MpCehiHzreSzNTczkc9d\"?>\n"
    "<x:xmpmeta xmlns:x=\"adobe:ns:meta/\" x:xmptk=\"XMP Core 6.0.0\">\n"
    "   <rdf:RDF xmlns:rdf=\"http://www.w3.org/1999/02/22-rdf-syntax-ns#\">\n"
    "      <rdf:Description rdf:about=\"\"\n"
    "            xmlns:dc=\"http://purl.org/dc/elements/1.1/\">\n"
    "         <dc:description>\n"
    "            <rdf:Alt>\n"
    "               <rdf:li xml:lang=\"x-default\"></rdf:li>\n"
    "            </rdf:Alt>\n"
    "         </dc:description>\n"
    "      </rdf:Description>\n"
    "   </rdf:RDF>\n"
    "</x:xmpmeta>\n"
    "<?xpacket end=\"w\"?>";

void checkExists(const QString& sidecar) {
    if (!QFileInfo::exists(sidecar)) {
        throw XMPError(XMPError::Case::fileMissing);
    }
}

XmlDocument parseSidecar(const QByteArray& bytes) {
    XmlDocument document = XmlDocument::parse(bytes);
    if (!document.root()) {
        throw XMPError(XMPError::Case::noPacket);
    }
    return document;
}

XmlDocument openSidecar(const QString& sidecar) {
    checkExists(sidecar);
    return readSettled(sidecar, XmlDocument::maximumSize,
                       [](const StampedBytes& file) { return parseSidecar(file.bytes); });
}

MetadataReading readingOf(const XmlDocument& document, const QString& sidecar, const QTimeZone& zone) {
    KeptLines rightsLines;
    rightsLines.print(u"[XMPWriter] readRights called for: "_s + QFileInfo(sidecar).fileName());
    MetadataReading reading;
    reading.facts = {.caption = defaultCaption(document),
                     .otherCaptions = sidecarTranslations(document),
                     .context = sidecarContext(document, zone),
                     .rights = sidecarRights(document, rightsLines),
                     .creator = sidecarCreator(document)};
    reading.rightsLines = rightsLines.lines();
    return reading;
}

} // namespace

bool XMPWriter::createMissingSidecar(const QString& sidecar) const {
    return createFile(sidecar, sidecarTemplate.toByteArray());
}

MetadataReading XMPWriter::readSidecar(const QString& sidecar, const QTimeZone& zone) const {
    return readingOf(openSidecar(sidecar), sidecar, zone);
}

EditableReading XMPWriter::readEditableSidecar(const QString& sidecar, const QTimeZone& zone) const {
    const XmlDocument document = openSidecar(sidecar);
    EditableReading editable{
        .reading = readingOf(document, sidecar, zone), .refusal = nullptr, .refusalLines = {}};
    try {
        requireReplaceable(sidecar);
        withCaption(document, u"caption"_s);
    } catch (const Error&) {
        editable.refusal = std::current_exception();
    }
    return editable;
}

void XMPWriter::writeDefaultCaption(const QString& caption, const QString& sidecar) const {
    checkExists(sidecar);
    editFile(sidecar, XmlDocument::maximumSize,
             [&caption](const QByteArray& bytes) { return withCaption(parseSidecar(bytes), caption); });
}

std::optional<QString> XMPWriter::writeDefaultCaption(const QString& caption, const QString& sidecar,
                                                      const QString& image,
                                                      const CaptionSource& source) const {
    std::optional<FileStamp> seen;
    QByteArray written;
    const auto edit = [&](const QByteArray& bytes) {
        const XmlDocument document = parseSidecar(bytes);
        seen = FileStamp::at(image);
        requireSamePicture(image, source.picture);
        requireSameFacts(readingOf(document, sidecar, source.zone).facts, source.facts);
        written = withCaption(document, caption);
        return written;
    };
    const auto isSameImage = [&] { return FileStamp::at(image) == seen; };
    editFile(sidecar, XmlDocument::maximumSize, edit, isSameImage);
    return defaultCaption(XmlDocument::parse(written));
}

void XMPWriter::fillEmptySidecar(const QString& sidecar) const {
    editFile(sidecar, XmlDocument::maximumSize, [&sidecar](const QByteArray& bytes) {
        if (!bytes.isEmpty()) {
            throw FileError(u"fill"_s, sidecar, EEXIST);
        }
        return sidecarTemplate.toByteArray();
    });
}

MetadataReading XMPWriter::readEmbedded(const QString& image, const QTimeZone& zone) const {
    const std::optional<EmbeddedMetadata> metadata = readEmbeddedMetadata(image);
    return metadata ? embeddedReading(*metadata, zone) : MetadataReading();
}

WrittenCaption XMPWriter::writeEmbeddedCaption(const QString& caption, const QString& image, PlainLog& log,
                                               const std::optional<CaptionSource>& source) const {
    return writeCaptionIntoJpeg(image, caption, log, source);
}

} // namespace ostrelle
