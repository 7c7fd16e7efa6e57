// SPDX-License-Identifier: GPL-3.0-or-later
#include "platform/AbandonedFiles.h"

#include "platform/Descriptor.h"
#include "platform/TemporaryFile.h"

#include <dirent.h>
#include <fcntl.h>
#include <sys/file.h>
#include <sys/stat.h>
#include <unistd.h>

#include <QFile>
#include <cerrno>
#include <ctime>
#include <memory>

namespace ostrelle {

namespace {

constexpr time_t ageWithLocks = 60; ///< seconds; a file that was made but not yet locked looks abandoned
constexpr time_t ageWithoutLocks = 3600;

bool isOwnFile(const struct stat& status) {
    return S_ISREG(status.st_mode) && status.st_uid == ::geteuid();
}

bool isOlderThan(const struct stat& status, time_t age) {
    return ::time(nullptr) - status.st_mtim.tv_sec >= age;
}

/// Checks the age first: to try the lock of a brand-new file could keep its writer from getting it.
bool isAbandoned(int folder, const char* name) {
    struct stat listed{};
    if (::fstatat(folder, name, &listed, AT_SYMLINK_NOFOLLOW) != 0 || !isOwnFile(listed) ||
        !isOlderThan(listed, ageWithLocks)) {
        return false;
    }
    // Some network file systems grant write locks only on files open for writing.
    const Descriptor file(::openat(folder, name, O_RDWR | O_NOFOLLOW | O_NONBLOCK | O_CLOEXEC));
    struct stat opened{};
    if (!file.isOpen() || ::fstat(file.number(), &opened) != 0 || opened.st_ino != listed.st_ino) {
        return false;
    }
    if (::flock(file.number(), LOCK_EX | LOCK_NB) == 0) {
        return true;
    }
    return errno != EWOULDBLOCK && isOlderThan(opened, ageWithoutLocks);
}

} // namespace

int removeAbandonedTemporaryFiles(const QString& folder) {
    const std::unique_ptr<DIR, int (*)(DIR*)> listing(::opendir(QFile::encodeName(folder).constData()),
                                                      ::closedir);
    if (!listing) {
        return 0;
    }
    int removed = 0;
    const int descriptor = ::dirfd(listing.get());
    while (const dirent* entry = ::readdir(listing.get())) {
        if (isTemporaryName(entry->d_name) && isAbandoned(descriptor, entry->d_name)) {
            removed += ::unlinkat(descriptor, entry->d_name, 0) == 0 ? 1 : 0;
        }
    }
    return removed;
}

} // namespace ostrelle
