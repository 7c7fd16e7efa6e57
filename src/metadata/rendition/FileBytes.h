// SPDX-License-Identifier: GPL-3.0-or-later
#pragma once

#include <QByteArray>
#include <QFile>
#include <QString>

namespace ostrelle {

/// A large file of foreign bytes, of which only small pieces are read. It is not mapped into memory, where
/// a card that is pulled or a share that goes away would end the program.
class FileBytes {
public:
    /// Throws ExtractError with cannotOpen.
    explicit FileBytes(const QString& path);

    qint64 size() const { return m_size; }
    /// `length` bytes, or none when they do not all lie in the file.
    QByteArray read(qint64 offset, qint64 length);

private:
    QFile m_file;
    qint64 m_size = 0;
};

} // namespace ostrelle
