// SPDX-License-Identifier: GPL-3.0-or-later
#include "platform/Files.h"

#include "platform/Descriptor.h"
#include "platform/FileError.h"
#include "platform/SettledReading.h"
#include "platform/TemporaryFile.h"

#include <fcntl.h>
#include <sys/stat.h>
#include <sys/xattr.h>
#include <unistd.h>

#include <QByteArrayView>
#include <QFile>
#include <algorithm>
#include <cerrno>
#include <cstdio>
#include <cstring>
#include <filesystem>
#include <functional>
#include <optional>
#include <thread>
#include <utility>
#include <vector>

namespace ostrelle {

using namespace Qt::StringLiterals;

namespace {

bool writeAll(int descriptor, const QByteArray& bytes) {
    qsizetype done = 0;
    while (done < bytes.size()) {
        const ssize_t written =
            ::write(descriptor, bytes.constData() + done, static_cast<std::size_t>(bytes.size() - done));
        if (written < 0 && errno != EINTR) {
            return false;
        }
        done += std::max<ssize_t>(written, 0);
    }
    return true;
}

/// Reads to the end, but at most one byte more than the limit.
std::optional<QByteArray> readAll(int descriptor, qint64 sizeHint, qint64 limit) {
    QByteArray bytes;
    bytes.resize(std::min(sizeHint, limit) + 1);
    qsizetype done = 0;
    for (;;) {
        if (done == bytes.size()) {
            if (done > limit) {
                break;
            }
            bytes.resize(std::min(bytes.size() * 2, limit + 1));
        }
        const ssize_t got =
            ::read(descriptor, bytes.data() + done, static_cast<std::size_t>(bytes.size() - done));
        if (got < 0 && errno == EINTR) {
            continue;
        }
        if (got < 0) {
            return std::nullopt;
        }
        if (got == 0) {
            break;
        }
        done += got;
    }
    bytes.truncate(done);
    return bytes;
}

/// Compares block by block: memory for the whole of a large file costs as much time as reading it.
bool readsBack(int descriptor, const QByteArray& bytes) {
    constexpr std::size_t blockSize = 256 << 10;
    if (::lseek(descriptor, 0, SEEK_SET) != 0) {
        return false;
    }
    std::vector<char> block(blockSize);
    QByteArrayView expected = bytes;
    for (;;) {
        const ssize_t got = ::read(descriptor, block.data(), block.size());
        if (got < 0 && errno == EINTR) {
            continue;
        }
        if (got <= 0) {
            return got == 0 && expected.isEmpty();
        }
        if (!expected.startsWith(QByteArrayView(block.data(), got))) {
            return false;
        }
        expected = expected.sliced(got);
    }
}

/// Copies owner, extended attributes (including the access list) and mode. What the process may not set is
/// left out: a file without them is better than no caption.
void copyAttributes(const std::filesystem::path& from, const struct stat& status, int to) {
    if (::fchown(to, status.st_uid, status.st_gid) != 0) {
        [[maybe_unused]] const int groupOnly = ::fchown(to, static_cast<uid_t>(-1), status.st_gid);
    }
    const ssize_t listSize = ::listxattr(from.c_str(), nullptr, 0);
    std::vector<char> names(static_cast<std::size_t>(std::max<ssize_t>(listSize, 0)));
    const ssize_t listed = names.empty() ? 0 : ::listxattr(from.c_str(), names.data(), names.size());
    for (ssize_t at = 0; at < listed;) {
        const char* name = names.data() + at;
        std::vector<char> value(
            static_cast<std::size_t>(std::max<ssize_t>(::getxattr(from.c_str(), name, nullptr, 0), 0)));
        const ssize_t size = ::getxattr(from.c_str(), name, value.data(), value.size());
        if (size >= 0) {
            [[maybe_unused]] const int set =
                ::fsetxattr(to, name, value.data(), static_cast<std::size_t>(size), 0);
        }
        at += static_cast<ssize_t>(std::strlen(name)) + 1;
    }
    [[maybe_unused]] const int modeSet = ::fchmod(to, status.st_mode & 07777U);
}

std::filesystem::path nativePath(const QString& path) {
    return QFile::encodeName(path).toStdString();
}

/// Follows a symbolic link, so that the link itself stays.
std::filesystem::path linkTarget(const std::filesystem::path& path) {
    std::error_code error;
    const std::filesystem::path target = std::filesystem::weakly_canonical(path, error);
    return error ? path : target;
}

/// Makes a rename survive a power cut, where the file system can. Fails only when data may have been lost.
void flushFolder(const std::filesystem::path& target, const QString& path) {
    const std::filesystem::path folder = target.has_parent_path() ? target.parent_path() : ".";
    const Descriptor opened(::open(folder.c_str(), O_RDONLY | O_DIRECTORY | O_CLOEXEC));
    const bool isRefused = opened.isOpen() && ::fsync(opened.number()) != 0;
    if (isRefused && (errno == EIO || errno == ENOSPC || errno == EDQUOT)) {
        throw FileError(u"write"_s, path, errno);
    }
}

/// A file to write beside its target and then put in its place.
struct FileWrite {
    QString path; ///< for error messages
    std::filesystem::path target;
    mode_t mode;
    const QByteArray& bytes;
    std::function<void(int descriptor)> dress;
    std::function<Placing(TemporaryFile& file)> place;
};

/// Writes the bytes, sets the attributes with `dress`, flushes the file and checks that it reads back.
void fill(const TemporaryFile& file, const FileWrite& write) {
    if (!file.isOpen() || !writeAll(file.descriptor(), write.bytes)) {
        throw FileError(u"write"_s, write.path, errno);
    }
    write.dress(file.descriptor());
    if (::fsync(file.descriptor()) != 0) {
        throw FileError(u"write"_s, write.path, errno);
    }
    if (!readsBack(file.descriptor(), write.bytes)) {
        throw FileError(u"write"_s, write.path, EIO);
    }
}

/// Tries a nameless file first, and a named one where that cannot be made or cannot be linked.
Placing carryOut(const FileWrite& write, const FileMeans& means) {
    Placing outcome = Placing::failed;
    if (means.namelessFiles) {
        TemporaryFile file = TemporaryFile::nameless(write.target, write.mode);
        if (file.isOpen()) {
            fill(file, write);
            outcome = write.place(file);
        }
    }
    if (outcome == Placing::failed) {
        TemporaryFile file = TemporaryFile::named(write.target, write.mode);
        fill(file, write);
        outcome = write.place(file);
        if (outcome == Placing::failed) {
            throw FileError(u"write"_s, write.path, errno);
        }
    }
    if (outcome == Placing::done) {
        flushFolder(write.target, write.path);
    }
    return outcome;
}

/// What to check just before the rename.
struct Condition {
    std::optional<FileStamp> expected; ///< of the file to be replaced
    std::function<bool()> isStillWanted = {};
};

/// As replaceFile(), under a condition. `placed` receives the stamp of the new file.
Placing replace(const QString& path, const QByteArray& bytes, mode_t newFileMode, const FileMeans& means,
                const Condition& condition = {}, std::optional<FileStamp>* placed = nullptr) {
    const std::filesystem::path target = linkTarget(nativePath(path));
    struct stat status{};
    const bool exists = ::stat(target.c_str(), &status) == 0;
    // A rename would replace even a write-protected file, but someone protected it on purpose.
    if (exists && ::faccessat(AT_FDCWD, target.c_str(), W_OK, AT_EACCESS) != 0) {
        throw FileError(u"write"_s, path, errno);
    }
    const auto dress = [&](int descriptor) {
        if (exists) {
            copyAttributes(target, status, descriptor);
        }
    };
    const auto place = [&](TemporaryFile& file) {
        if (!file.takeName(means)) {
            return Placing::failed;
        }
        const std::optional<FileStamp>& expected = condition.expected;
        const bool isOutdated = expected && FileStamp::at(QFile::decodeName(target.c_str())) != expected;
        const bool isUnwanted = condition.isStillWanted && !condition.isStillWanted();
        const Placing outcome = isOutdated || isUnwanted ? Placing::outdated : file.replaceTarget();
        struct stat now{};
        if (placed != nullptr && ::fstat(file.descriptor(), &now) == 0) {
            *placed = FileStamp(now);
        }
        return outcome;
    };
    return carryOut({.path = path,
                     .target = target,
                     .mode = exists ? S_IRUSR | S_IWUSR : newFileMode,
                     .bytes = bytes,
                     .dress = dress,
                     .place = place},
                    means);
}

} // namespace

StampedBytes readStampedFile(const QString& path, qint64 limit) {
    const Descriptor file(::open(nativePath(path).c_str(), O_RDONLY | O_CLOEXEC | O_NONBLOCK));
    struct stat status{};
    if (!file.isOpen() || ::fstat(file.number(), &status) != 0) {
        throw FileError(u"read"_s, path, errno);
    }
    if (S_ISDIR(status.st_mode)) {
        throw FileError(u"read"_s, path, EISDIR);
    }
    if (!S_ISREG(status.st_mode)) {
        throw FileError(u"read"_s, path, EINVAL);
    }
    if (status.st_size > limit) {
        throw FileError(u"read"_s, path, EFBIG);
    }
    std::optional<QByteArray> bytes = readAll(file.number(), status.st_size, limit);
    if (!bytes) {
        throw FileError(u"read"_s, path, errno);
    }
    if (bytes->size() > limit) {
        throw FileError(u"read"_s, path, EFBIG);
    }
    return {std::move(*bytes), FileStamp(status)};
}

QByteArray readFile(const QString& path, qint64 limit) {
    return readStampedFile(path, limit).bytes;
}

void replaceFile(const QString& path, const QByteArray& bytes, mode_t newFileMode, const FileMeans& means) {
    replace(path, bytes, newFileMode, means);
}

void pauseThread(std::chrono::milliseconds span) {
    std::this_thread::sleep_for(span);
}

namespace {

/// Some programs remove a file and then create it anew.
StampedBytes readWhenThere(const QString& path, qint64 limit, ReadAttempts& attempts) {
    for (;;) {
        try {
            return readStampedFile(path, limit);
        } catch (const FileError& error) {
            if (error.code() != ENOENT || !attempts.again()) {
                throw;
            }
        }
    }
}

FileStamp editInAttempts(const QString& path, qint64 limit, const StampedFileEdit& edit, const Pause& pause,
                         const std::function<bool()>& isStillWanted) {
    ReadAttempts attempts(path, pause);
    for (;;) {
        const StampedBytes file = readWhenThere(path, limit, attempts);
        QByteArray edited;
        try {
            edited = edit(file);
        } catch (...) {
            if (!attempts.againAfterFailure(file.stamp)) {
                throw;
            }
            continue;
        }
        std::optional<FileStamp> placed;
        const Condition condition{.expected = file.stamp, .isStillWanted = isStillWanted};
        if (replace(path, edited, S_IRUSR | S_IWUSR, {}, condition, &placed) == Placing::done) {
            return *placed;
        }
        if (!attempts.again()) {
            throw FileError(u"keep up with another program's changes to"_s, path, EBUSY);
        }
    }
}

StampedFileEdit unstamped(const FileEdit& edit) {
    return [&edit](const StampedBytes& file) { return edit(file.bytes); };
}

} // namespace

FileStamp editFile(const QString& path, qint64 limit, const FileEdit& edit, const Pause& pause) {
    return editInAttempts(path, limit, unstamped(edit), pause, {});
}

FileStamp editFile(const QString& path, qint64 limit, const StampedFileEdit& edit, const Pause& pause) {
    return editInAttempts(path, limit, edit, pause, {});
}

FileStamp editFile(const QString& path, qint64 limit, const FileEdit& edit,
                   const std::function<bool()>& isStillWanted) {
    return editInAttempts(path, limit, unstamped(edit), pauseThread, isStillWanted);
}

bool createFile(const QString& path, const QByteArray& bytes, const FileMeans& means) {
    return carryOut({.path = path,
                     .target = nativePath(path),
                     .mode = 0666,
                     .bytes = bytes,
                     .dress = [](int) {},
                     .place = [&](TemporaryFile& file) { return file.becomeTarget(means); }},
                    means) == Placing::done;
}

void flushFile(const QString& path) {
    const Descriptor opened(::open(nativePath(path).c_str(), O_RDONLY | O_CLOEXEC | O_NOFOLLOW | O_NONBLOCK));
    if (!opened.isOpen() || ::fsync(opened.number()) != 0) {
        throw FileError(u"write"_s, path, errno);
    }
}

void moveIntoPlace(const QString& file, const QString& path) {
    flushFile(file);
    if (::rename(nativePath(file).c_str(), nativePath(path).c_str()) != 0) {
        throw FileError(u"write"_s, path, errno);
    }
    flushFolder(nativePath(path), path);
}

void touchFile(const QString& path) {
    if (::utimensat(AT_FDCWD, nativePath(path).c_str(), nullptr, 0) != 0) {
        throw FileError(u"set the date of"_s, path, errno);
    }
}

void makeFolder(const QString& path) {
    std::error_code error;
    std::filesystem::create_directories(nativePath(path), error);
    if (error) {
        throw FileError(u"make the folder"_s, path, error.value());
    }
}

} // namespace ostrelle
