// SPDX-License-Identifier: GPL-3.0-or-later
#include "platform/FileLock.h"

#include "platform/FileError.h"

#include <fcntl.h>
#include <sys/file.h>
#include <sys/stat.h>
#include <unistd.h>

#include <QDeadlineTimer>
#include <QFile>
#include <cerrno>
#include <thread>

namespace ostrelle {

using namespace Qt::StringLiterals;

FileLock::FileLock(const QString& path, std::chrono::milliseconds patience) {
    const QString lockPath = path + u".lock"_s;
    m_descriptor =
        ::open(QFile::encodeName(lockPath).constData(), O_RDWR | O_CREAT | O_CLOEXEC, S_IRUSR | S_IWUSR);
    if (m_descriptor < 0) {
        throw FileError(u"lock"_s, lockPath, errno);
    }
    const QDeadlineTimer deadline(patience);
    while (::flock(m_descriptor, LOCK_EX | LOCK_NB) != 0) {
        const int reason = errno;
        if (deadline.hasExpired() || (reason != EWOULDBLOCK && reason != EINTR)) {
            ::close(m_descriptor);
            throw FileError(u"lock"_s, lockPath, reason);
        }
        std::this_thread::sleep_for(std::chrono::milliseconds(1));
    }
}

FileLock::~FileLock() {
    ::close(m_descriptor);
}

} // namespace ostrelle
