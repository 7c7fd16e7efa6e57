// SPDX-License-Identifier: GPL-3.0-or-later
#pragma once

#include "platform/FileStamp.h"

#include <QFile>
#include <QString>
#include <optional>

namespace ostrelle {

/// An image file, opened once for all that is read of it: a JPEG's metadata and picture then belong together,
/// even if another program puts a new file in its place meanwhile.
class ImageFile {
public:
    explicit ImageFile(const QString& path) : m_path(path), m_stamp(FileStamp::at(path)) {}

    const QString& path() const { return m_path; }
    /// From before the file was opened; nothing if there is no file.
    const std::optional<FileStamp>& stamp() const { return m_stamp; }

    /// Opens the file, unbuffered, unless that was done. False, with a reason, if it is not a regular file or
    /// cannot be opened.
    bool open();
    /// A phrase such as "there is no such file".
    const QString& reason() const { return m_reason; }
    /// At any position.
    QFile& bytes() { return m_file; }

private:
    QString m_path;
    QFile m_file;
    QString m_reason;
    std::optional<FileStamp> m_stamp;
};

} // namespace ostrelle
