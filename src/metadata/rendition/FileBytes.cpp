// SPDX-License-Identifier: GPL-3.0-or-later
#include "metadata/rendition/FileBytes.h"

#include "metadata/rendition/ExtractError.h"

namespace ostrelle {

FileBytes::FileBytes(const QString& path) : m_file(path) {
    if (!m_file.open(QIODevice::ReadOnly)) {
        throw ExtractError(ExtractError::Case::cannotOpen, m_file.errorString());
    }
    m_size = m_file.size();
}

QByteArray FileBytes::read(qint64 offset, qint64 length) {
    if (offset < 0 || length < 0 || offset > m_size || length > m_size - offset || !m_file.seek(offset)) {
        return {};
    }
    const QByteArray bytes = m_file.read(length);
    return bytes.size() == length ? bytes : QByteArray();
}

} // namespace ostrelle
