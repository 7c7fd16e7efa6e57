// SPDX-License-Identifier: GPL-3.0-or-later
#include "metadata/bytes/ImageFile.h"

#include <QFileInfo>

namespace ostrelle {

bool ImageFile::open() {
    // Opening a pipe would wait for its writer.
    return m_file.isOpen() ||
           (QFileInfo(m_file).isFile() && m_file.open(QIODevice::ReadOnly | QIODevice::Unbuffered));
}

} // namespace ostrelle
