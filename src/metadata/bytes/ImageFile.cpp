// SPDX-License-Identifier: GPL-3.0-or-later
#include "metadata/bytes/ImageFile.h"

#include <fcntl.h>
#include <sys/stat.h>
#include <unistd.h>

#include <cerrno>

namespace ostrelle {

using namespace Qt::StringLiterals;

bool ImageFile::open() {
    if (m_file.isOpen()) {
        return true;
    }
    // Opening a pipe would otherwise wait for its writer.
    const int descriptor = ::open(QFile::encodeName(m_path).constData(), O_RDONLY | O_CLOEXEC | O_NONBLOCK);
    struct stat status{};
    if (descriptor < 0 || ::fstat(descriptor, &status) != 0) {
        m_reason = errno == ENOENT ? u"there is no such file"_s : qt_error_string();
    } else if (!S_ISREG(status.st_mode)) {
        m_reason = u"it is not a file"_s;
    } else {
        return m_file.open(descriptor, QIODevice::ReadOnly | QIODevice::Unbuffered, QFile::AutoCloseHandle);
    }
    if (descriptor >= 0) {
        ::close(descriptor);
    }
    return false;
}

} // namespace ostrelle
