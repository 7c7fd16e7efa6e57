// SPDX-License-Identifier: GPL-3.0-or-later
#include "platform/TemporaryFile.h"

#include <fcntl.h>
#include <sys/file.h>
#include <sys/stat.h>
#include <unistd.h>

#include <QRandomGenerator>
#include <algorithm>
#include <cerrno>
#include <cstdio>
#include <string>
#include <utility>

namespace ostrelle {

namespace {

constexpr std::string_view ownMark = ".ostrelle-";
constexpr int numberLength = 13; ///< 64 bits in digits and letters
constexpr int numberBase = 36;

std::filesystem::path folderOf(const std::filesystem::path& target) {
    return target.has_parent_path() ? target.parent_path() : ".";
}

} // namespace

std::filesystem::path temporaryNameFor(const std::filesystem::path& path) {
    constexpr std::size_t longestStem = 200; // the whole name must stay below NAME_MAX
    const std::string stem = path.filename().string().substr(0, longestStem);
    const QByteArray number = QByteArray::number(QRandomGenerator::system()->generate64(), numberBase);
    return path.parent_path() /
           ('.' + stem + std::string(ownMark) + number.rightJustified(numberLength, '0').toStdString());
}

bool isTemporaryName(std::string_view name) {
    if (name.size() <= 1 + ownMark.size() + numberLength || name.front() != '.') {
        return false;
    }
    const std::string_view number = name.substr(name.size() - numberLength);
    const bool isOfDigitsAndLetters = std::ranges::all_of(number, [](char character) {
        return (character >= '0' && character <= '9') || (character >= 'a' && character <= 'z');
    });
    name.remove_suffix(numberLength);
    return isOfDigitsAndLetters && name.ends_with(ownMark);
}

TemporaryFile TemporaryFile::nameless(const std::filesystem::path& target, mode_t mode) {
    return {target, temporaryNameFor(target),
            Descriptor(::open(folderOf(target).c_str(), O_RDWR | O_TMPFILE | O_CLOEXEC, mode)), false};
}

TemporaryFile TemporaryFile::named(const std::filesystem::path& target, mode_t mode) {
    const std::filesystem::path name = temporaryNameFor(target);
    Descriptor file(::open(name.c_str(), O_RDWR | O_CREAT | O_EXCL | O_CLOEXEC, mode));
    const bool hasName = file.isOpen();
    return {target, name, std::move(file), hasName};
}

TemporaryFile::TemporaryFile(const std::filesystem::path& target, std::filesystem::path name, Descriptor file,
                             bool hasName)
    : m_target(target), m_name(std::move(name)), m_file(std::move(file)), m_hasName(hasName) {
    if (m_file.isOpen()) {
        // Without locks, the file's age serves the same purpose, only later.
        [[maybe_unused]] const int locked = ::flock(m_file.number(), LOCK_EX | LOCK_NB);
    }
}

TemporaryFile::~TemporaryFile() {
    if (m_hasName) {
        ::unlink(m_name.c_str());
    }
}

bool TemporaryFile::takeName(const FileMeans& means) {
    m_hasName = m_hasName || link(m_name, means);
    return m_hasName;
}

Placing TemporaryFile::replaceTarget() {
    if (::rename(m_name.c_str(), m_target.c_str()) != 0) {
        return Placing::failed;
    }
    m_hasName = false;
    return Placing::done;
}

Placing TemporaryFile::becomeTarget(const FileMeans& means) {
    if (link(m_target, means)) {
        return Placing::done;
    }
    if (errno == EEXIST) {
        return Placing::exists;
    }
    if (!m_hasName) {
        return Placing::failed;
    }
    if (renameUnlessThere(means)) {
        return Placing::done;
    }
    return errno == EEXIST ? Placing::exists : takeEmptyPlace();
}

bool TemporaryFile::link(const std::filesystem::path& name, const FileMeans& means) const {
    if (!means.hardLinks) {
        errno = EPERM;
        return false;
    }
    const std::string source =
        m_hasName ? m_name.string() : "/proc/self/fd/" + std::to_string(m_file.number());
    return ::linkat(AT_FDCWD, source.c_str(), AT_FDCWD, name.c_str(), m_hasName ? 0 : AT_SYMLINK_FOLLOW) == 0;
}

bool TemporaryFile::renameUnlessThere(const FileMeans& means) {
    if (!means.exclusiveRename) {
        errno = EINVAL;
        return false;
    }
    m_hasName = ::renameat2(AT_FDCWD, m_name.c_str(), AT_FDCWD, m_target.c_str(), RENAME_NOREPLACE) != 0;
    return !m_hasName;
}

/// The last resort. Takes the name with an empty file, which fails if one exists, and writes the whole file
/// right after. A kill in between leaves the empty file, but never part of ours; if someone else has written
/// into the empty file by that time, theirs stays.
Placing TemporaryFile::takeEmptyPlace() {
    const Descriptor place(::open(m_target.c_str(), O_WRONLY | O_CREAT | O_EXCL | O_CLOEXEC, 0666));
    if (!place.isOpen()) {
        return errno == EEXIST ? Placing::exists : Placing::failed;
    }
    struct stat status{};
    if (::stat(m_target.c_str(), &status) == 0 && status.st_size != 0) {
        return Placing::exists;
    }
    const Placing outcome = replaceTarget();
    if (outcome == Placing::failed) {
        const int reason = errno;
        if (::stat(m_target.c_str(), &status) == 0 && status.st_size == 0) {
            ::unlink(m_target.c_str());
        }
        errno = reason;
    }
    return outcome;
}

} // namespace ostrelle
