// SPDX-License-Identifier: GPL-3.0-or-later
#include "metadata/EmbeddedCaptionWrite.h"

#include "metadata/EditRefusal.h"
#include "metadata/EmbeddedCaptionEdit.h"
#include "metadata/EmbeddedMetadata.h"
#include "metadata/ExtractError.h"
#include "metadata/JpegDecoder.h"
#include "metadata/XMPError.h"
#include "platform/FileError.h"
#include "platform/Files.h"

#include <sys/stat.h>

#include <QFile>
#include <QFileInfo>
#include <tuple>

namespace ostrelle {

using namespace Qt::StringLiterals;

namespace {

constexpr qint64 maximumFileSize = qint64{512} << 20;

/// What changes when another program writes or replaces a file.
struct FileStamp {
    dev_t device = 0;
    ino_t number = 0;
    off_t size = 0;
    std::tuple<time_t, long> modified;

    static FileStamp of(const QString& path) {
        struct stat status{};
        if (::stat(QFile::encodeName(path).constData(), &status) != 0) {
            return {};
        }
        return {
            status.st_dev, status.st_ino, status.st_size, {status.st_mtim.tv_sec, status.st_mtim.tv_nsec}};
    }

    friend bool operator==(const FileStamp&, const FileStamp&) = default;
};

/// One caption write into one file, with its words for the log.
class EmbeddedCaptionWrite {
public:
    EmbeddedCaptionWrite(const QString& path, const QString& caption, PlainLog& log)
        : m_path(path), m_caption(caption), m_log(log) {}

    void run() {
        constexpr int attempts = 3;
        for (int attempt = 0; attempt < attempts; ++attempt) {
            const FileStamp stamp = FileStamp::of(m_path);
            const QByteArray original = readOriginal();
            if (attempt == 0) {
                tellWhatStays(original);
            }
            checkPicture();
            const QByteArray edited = edit(original);
            if (FileStamp::of(m_path) == stamp) {
                replace(edited);
                tellOfManifest(original);
                return;
            }
            say(u"The file was changed by another program, reading it again: "_s + fileName());
        }
        fail(u"ERROR: Write operation failed for "_s, u"Another program keeps changing the file."_s);
    }

private:
    void say(const QString& words) { m_log.print(u"[XMPWriter] "_s + words); }
    QString fileName() const { return QFileInfo(m_path).fileName(); }

    [[noreturn]] void fail(const QString& event, const QString& reason) {
        tell(event, reason);
        throw XMPError(XMPError::Case::writeFailed);
    }

    void tell(const QString& event, const QString& reason) {
        say(event + fileName());
        say(u"Parent directory: "_s + QFileInfo(m_path).absolutePath());
        say(u"Error: "_s + reason);
    }

    QByteArray readOriginal() {
        try {
            return readFile(m_path, maximumFileSize);
        } catch (const FileError&) {
            throw XMPError(XMPError::Case::fileMissing);
        }
    }

    void tellWhatStays(const QByteArray& original) {
        const std::optional<EmbeddedMetadata> metadata = parseEmbeddedMetadata(original);
        if (metadata && !metadata->iptc.isEmpty()) {
            say(u"Preserving IPTC fields: "_s + metadata->iptc.keys().join(u", "_s));
        }
    }

    /// A file whose picture is damaged is left alone: it may still be arriving.
    void checkPicture() {
        constexpr int side = 64; // the smallest decoding that still goes over all of the data
        try {
            decodeJpeg(m_path, side);
        } catch (const ExtractError&) {
            throw XMPError(XMPError::Case::parseFailed);
        }
    }

    QByteArray edit(const QByteArray& original) {
        try {
            return withEmbeddedCaption(original, m_caption);
        } catch (const EditRefusal& refusal) {
            say(u"ERROR: Failed to finalize image to temp file"_s);
            say(u"Nothing was written into %1, because %2."_s.arg(fileName(),
                                                                  refusal.localizedDescription()));
        }
        throw XMPError(XMPError::Case::writeFailed);
    }

    void replace(const QByteArray& edited) {
        try {
            replaceFile(m_path, edited);
        } catch (const FileError& error) {
            explain(error);
            throw XMPError(XMPError::Case::writeFailed);
        }
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

    void tellOfManifest(const QByteArray& original) {
        if (hasSignedManifest(original)) {
            say(u"%1 carries content credentials (C2PA), whose signature does not match the file any more."_s
                    .arg(fileName()));
        }
    }

    QString m_path;
    QString m_caption;
    PlainLog& m_log;
};

} // namespace

void writeCaptionIntoJpeg(const QString& path, const QString& caption, PlainLog& log) {
    EmbeddedCaptionWrite(path, caption, log).run();
}

} // namespace ostrelle
