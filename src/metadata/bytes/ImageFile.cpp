// SPDX-License-Identifier: GPL-3.0-or-later
#include "metadata/bytes/ImageFile.h"

#include <QFileInfo>

namespace ostrelle {

using namespace Qt::StringLiterals;

bool ImageFile::open() {
    if (m_file.isOpen()) {
        return true;
    }
    // Opening a pipe would wait for its writer.
    if (!QFileInfo(m_file).isFile()) {
        m_reason = u"there is no such file"_s;
        return false;
    }
    const bool isOpen = m_file.open(QIODevice::ReadOnly | QIODevice::Unbuffered);
    m_reason = isOpen ? QString() : m_file.errorString();
    return isOpen;
}

} // namespace ostrelle
