// SPDX-License-Identifier: GPL-3.0-or-later
#pragma once

#include <QByteArray>
#include <QFile>
#include <QString>

namespace ostrelle {

/// A large untrusted file, read in small pieces. It is not memory-mapped: pulling the card or losing the
/// share would then crash the program.
class FileBytes {
public:
    /// Throws ExtractError with cannotOpen.
    explicit FileBytes(const QString& path);

    qint64 size() const { return m_size; }
    /// `length` bytes, or none unless all of them lie in the file.
    QByteArray read(qint64 offset, qint64 length);

private:
    QFile m_file;
    qint64 m_size = 0;
};

} // namespace ostrelle
