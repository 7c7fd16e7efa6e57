// SPDX-License-Identifier: GPL-3.0-or-later
#pragma once

#include "metadata/XMPContext.h"
#include "metadata/XMPWriter.h"
#include "platform/PlainLog.h"

#include <QCoroTask>
#include <QString>
#include <QTimeZone>
#include <optional>

namespace ostrelle {

/// The metadata of one image, wherever they are: inside a JPEG, or in the sidecar of any other image. All
/// operations run on a worker thread, say their log lines on the caller's, and throw what XMPWriter throws.
class ImageMetadata {
public:
    /// The log has to outlive the object and what it has under way.
    ImageMetadata(QString file, XMPWriter xmp, PlainLog& log);

    /// True for a JPEG.
    bool isEmbedded() const { return m_isEmbedded; }
    /// Where the sidecar is or would be, for a JPEG too.
    const QString& sidecar() const { return m_sidecar; }

    /// Untrimmed from a sidecar, trimmed from a JPEG.
    QCoro::Task<std::optional<QString>> readCaption() const;
    /// Dates that are days are those of the zone.
    QCoro::Task<XMPContext> readContext(QTimeZone zone) const;
    QCoro::Task<std::optional<QString>> readRights() const;
    QCoro::Task<std::optional<QString>> readCreator() const;
    /// A sidecar's modification time becomes now, even if nothing in it changes.
    /// `decoded` is the file as it was when its picture was decoded, see XMPWriter::writeEmbeddedCaption().
    QCoro::Task<> writeCaption(QString caption, std::optional<FileStamp> decoded) const;

private:
    QString m_file;
    QString m_sidecar;
    XMPWriter m_xmp;
    PlainLog& m_log;
    bool m_isEmbedded;
};

} // namespace ostrelle
