// SPDX-License-Identifier: GPL-3.0-or-later
#include "metadata/jpeg/EmbeddedCaptionWrite.h"

#include "metadata/bytes/JpegFront.h"
#include "metadata/facts/XMPError.h"
#include "metadata/jpeg/EditRefusal.h"
#include "metadata/jpeg/EmbeddedCaptionEdit.h"
#include "metadata/jpeg/EmbeddedMetadata.h"
#include "metadata/jpeg/EmbeddedReading.h"
#include "metadata/rendition/ExtractError.h"
#include "metadata/rendition/JpegDecoder.h"
#include "platform/FileError.h"
#include "platform/Files.h"
#include "platform/KeptLines.h"
#include "platform/WriteCheck.h"

#include <QFileInfo>
#include <algorithm>
#include <cerrno>
#include <exception>

namespace ostrelle {

using namespace Qt::StringLiterals;

namespace {

constexpr qint64 maximumFileSize = qint64{512} << 20;

/// The parts of a file that the edits look at: its segments, and the end of its trailer.
struct FrontAndTrailer {
    QByteArray bytes;
    qint64 fileSize = 0;
};

FrontAndTrailer readFrontAndTrailer(ImageFile& image) {
    constexpr qint64 trailerSize = 64;
    QFile& file = openForReading(image);
    FrontAndTrailer read{.bytes = readJpegFront(file), .fileSize = file.size()};
    file.seek(std::max(read.fileSize - trailerSize, qint64{read.bytes.size()}));
    read.bytes += file.read(trailerSize);
    return read;
}

/// One write of a caption to one file, or a trial of one, with its log lines.
class EmbeddedCaptionWrite {
public:
    EmbeddedCaptionWrite(const QString& path, const QString& caption, PlainLog& log,
                         const std::optional<CaptionSource>& source)
        : m_path(path), m_caption(caption), m_log(log), m_source(source) {}

    WrittenCaption run() {
        m_written.image = edit();
        if (m_hasManifest) {
            say(u"%1 carries content credentials (C2PA), whose signature does not match the file any more."_s
                    .arg(fileName()));
        }
        return m_written;
    }

    void tryOut(const FrontAndTrailer& file) {
        try {
            if (file.fileSize > maximumFileSize) {
                throw FileError(u"read"_s, m_path, EFBIG);
            }
            requireReplaceable(m_path);
            withEmbeddedCaption(file.bytes, m_caption);
        } catch (const FileError& error) {
            if (error.isPermissionDenied()) {
                explain(error);
            }
            throw XMPError(XMPError::Case::writeFailed, error.localizedDescription());
        } catch (const EditRefusal& refusal) {
            refuse(refusal);
        }
    }

private:
    FileStamp edit() {
        try {
            return editFile(m_path, maximumFileSize,
                            [this](const QByteArray& original) { return edited(original); });
        } catch (const FileError& error) {
            if (m_attempts == 0) { // not even read
                throw XMPError(XMPError::Case::fileMissing, error.localizedDescription());
            }
            explain(error);
            throw XMPError(XMPError::Case::writeFailed, error.localizedDescription());
        }
    }

    void say(const QString& words) { m_log.print(u"[XMPWriter] "_s + words); }
    QString fileName() const { return QFileInfo(m_path).fileName(); }

    void tell(const QString& event, const QString& reason) {
        say(event + fileName());
        say(u"Parent directory: "_s + QFileInfo(m_path).absolutePath());
        say(u"Error: "_s + reason);
    }

    /// Called again for a file that another program has put in place meanwhile.
    QByteArray edited(const QByteArray& original) {
        const std::optional<EmbeddedMetadata> metadata = parseEmbeddedMetadata(original);
        if (m_attempts++ > 0) {
            say(u"The file was changed by another program, reading it again: "_s + fileName());
        }
        if (!metadata) { // it was one, unless another program is still writing it
            throw XMPError(XMPError::Case::parseFailed);
        }
        if (m_attempts == 1) {
            tellWhatStays(*metadata);
        }
        if (m_source) {
            requireSamePicture(m_path, m_source->picture); // which was decoded in full for its rendition
            requireSameFacts(embeddedReading(*metadata, m_source->zone).facts, m_source->facts);
        } else {
            checkPicture();
        }
        m_hasManifest = hasSignedManifest(original);
        return withCaption(original);
    }

    [[noreturn]] void refuse(const EditRefusal& refusal) {
        const QString reason = refusal.localizedDescription();
        say(u"Nothing was written into %1, because %2."_s.arg(fileName(), reason));
        throw XMPError(XMPError::Case::writeFailed, u"The reason: %1."_s.arg(reason));
    }

    void tellWhatStays(const EmbeddedMetadata& metadata) {
        if (!metadata.iptc.isEmpty()) {
            say(u"Preserving IPTC fields: "_s + metadata.iptc.keys().join(u", "_s));
        }
    }

    /// Leaves a file with a damaged picture alone: it may still be arriving.
    void checkPicture() {
        constexpr int side = 64; // the smallest decoding that still reads all of the data
        try {
            decodeJpeg(m_path, side);
        } catch (const ExtractError&) {
            throw XMPError(XMPError::Case::parseFailed);
        }
    }

    QByteArray withCaption(const QByteArray& original) {
        try {
            QByteArray edited = withEmbeddedCaption(original, m_caption);
            readBack(edited);
            return edited;
        } catch (const EditRefusal& refusal) {
            say(u"ERROR: Failed to finalize image to temp file"_s);
            refuse(refusal);
        }
    }

    /// What readers will find in the file.
    void readBack(const QByteArray& edited) {
        KeptLines lines;
        const std::optional<EmbeddedMetadata> metadata = parseEmbeddedMetadata(edited);
        m_written.caption = metadata ? embeddedCaption(*metadata, lines) : std::nullopt;
        m_written.captionLines = lines.lines();
    }

    void explain(const FileError& error) {
        if (error.isPermissionDenied()) {
            tell(u"ERROR: File coordination failed for "_s, error.localizedDescription());
            say(u"This usually indicates a permission issue. Please grant folder access permissions."_s);
            return;
        }
        say(u"ERROR: Failed to copy temp file to final location: "_s + error.localizedDescription());
        tell(u"ERROR: Write operation failed for "_s, error.localizedDescription());
    }

    QString m_path;
    QString m_caption;
    PlainLog& m_log;
    std::optional<CaptionSource> m_source;
    WrittenCaption m_written;
    int m_attempts = 0;
    bool m_hasManifest = false;
};

} // namespace

WrittenCaption writeCaptionIntoJpeg(const QString& path, const QString& caption, PlainLog& log,
                                    const std::optional<CaptionSource>& source) {
    return EmbeddedCaptionWrite(path, caption, log, source).run();
}

EditableReading readEditableJpeg(ImageFile& image, const QTimeZone& zone) {
    const QString longCaption(400, QChar(0x00E9)); // cannot be stored as ASCII
    const FrontAndTrailer file = readFrontAndTrailer(image);
    const std::optional<EmbeddedMetadata> metadata = parseEmbeddedMetadata(file.bytes);
    EditableReading editable;
    editable.reading = metadata ? embeddedReading(*metadata, zone) : MetadataReading();
    KeptLines lines;
    try {
        EmbeddedCaptionWrite(image.path(), longCaption, lines, std::nullopt).tryOut(file);
    } catch (const XMPError&) {
        editable.refusal = std::current_exception();
    }
    editable.refusalLines = lines.lines();
    return editable;
}

} // namespace ostrelle
