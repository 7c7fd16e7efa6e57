// SPDX-License-Identifier: GPL-3.0-or-later
#include "metadata/ImageMetadata.h"

#include "metadata/XMPWriter.h"
#include "metadata/facts/ImageKind.h"
#include "metadata/jpeg/EmbeddedCaptionWrite.h"
#include "metadata/sidecar/SidecarPath.h"
#include "platform/FileError.h"
#include "platform/Files.h"

#include <fcntl.h>

#include <QDateTime>
#include <QFile>
#include <QFileInfo>
#include <cerrno>
#include <cstdio>
#include <utility>

namespace ostrelle {

using namespace Qt::StringLiterals;

namespace {

/// Returns the sidecar's new name. Throws FileError.
QString setAside(const QString& sidecar) {
    constexpr int mostCopies = 1000;
    for (int number = 1; number <= mostCopies; ++number) {
        const QString copy =
            sidecar + u".unreadable"_s + (number == 1 ? QString() : u'.' + QString::number(number));
        if (QFileInfo(copy).isSymLink() || QFileInfo::exists(copy)) {
            continue;
        }
        if (std::rename(QFile::encodeName(sidecar).constData(), QFile::encodeName(copy).constData()) != 0) {
            throw FileError(u"set aside"_s, sidecar, errno);
        }
        return copy;
    }
    throw FileError(u"set aside"_s, sidecar, EEXIST);
}

/// True for an empty sidecar too old for anyone to be about to write it. A program killed right after
/// creating the file leaves one; so may ours, on a file system that offers little.
bool isAbandoned(const QString& sidecar) {
    constexpr qint64 patience = 10; // seconds
    const QFileInfo file(sidecar);
    return file.exists() && file.size() == 0 &&
           file.lastModified().secsTo(QDateTime::currentDateTime()) >= patience;
}

} // namespace

ImageMetadata::ImageMetadata(QString image) : m_image(std::move(image)), m_isEmbedded(isJpegImage(m_image)) {}

QString ImageMetadata::expectedPlace() const {
    return m_isEmbedded ? m_image : sidecarPath(m_image);
}

QString ImageMetadata::sidecar() const {
    return findSidecar(m_image);
}

bool ImageMetadata::lacksSidecar() const {
    return !m_isEmbedded && !QFileInfo::exists(sidecar());
}

bool ImageMetadata::provideSidecar() const {
    if (m_isEmbedded) {
        return false;
    }
    const QString place = sidecar();
    if (isAbandoned(place)) {
        XMPWriter().fillEmptySidecar(place);
        return true;
    }
    return !QFileInfo::exists(place) && XMPWriter().createMissingSidecar(place);
}

void ImageMetadata::replaceUnreadableSidecar() const {
    if (m_isEmbedded) {
        return;
    }
    const QString place = sidecar();
    const QString copy = setAside(place);
    try {
        XMPWriter().createMissingSidecar(place);
    } catch (const FileError&) {
        QFile::rename(copy, place); // never over an existing file
        throw;
    }
}

MetadataReading ImageMetadata::read(const QTimeZone& zone) const {
    const std::optional<FileStamp> image = FileStamp::at(m_image);
    MetadataReading reading =
        m_isEmbedded ? XMPWriter().readEmbedded(m_image, zone) : XMPWriter().readSidecar(sidecar(), zone);
    reading.image = image;
    return reading;
}

EditableReading ImageMetadata::readEditable(ImageFile& image, const QTimeZone& zone) const {
    EditableReading editable =
        m_isEmbedded ? readEditableJpeg(image, zone) : XMPWriter().readEditableSidecar(sidecar(), zone);
    editable.reading.image = image.stamp();
    return editable;
}

WrittenCaption ImageMetadata::writeCaption(const QString& caption, const CaptionSource& source,
                                           PlainLog& log) const {
    if (m_isEmbedded) {
        return XMPWriter().writeEmbeddedCaption(caption, m_image, log, source);
    }
    const std::optional<FileStamp> image = FileStamp::at(m_image); // from before the comparison
    const QString place = sidecar();
    std::optional<QString> written = XMPWriter().writeDefaultCaption(caption, place, m_image, source);
    touchFile(place);
    return {.image = image, .caption = std::move(written), .captionLines = {}};
}

} // namespace ostrelle
