// SPDX-License-Identifier: GPL-3.0-or-later
// What the program asks of the system while it writes a file, in which order, and what it makes of a refusal.
// The calls go through the functions at the end of this file, which take the place of the C library's.
#include "platform/AbandonedFiles.h"
#include "platform/FileError.h"
#include "platform/Files.h"

#include <dlfcn.h>
#include <fcntl.h>
#include <gtest/gtest.h>
#include <sys/file.h>
#include <sys/stat.h>
#include <unistd.h>

#include <QFile>
#include <QTemporaryDir>
#include <cerrno>
#include <cstdarg>
#include <ctime>
#include <functional>
#include <map>
#include <string>
#include <vector>

namespace {

using Calls = std::vector<std::string>;

bool isRecording = false;
Calls calls;                         // that succeeded, and those that were refused with a "!"
std::map<std::string, int> refusals; // errno, by the call

/// Notes the call; true when it is to be refused, with errno set.
bool isRefused(const std::string& call) {
    if (!isRecording) {
        return false;
    }
    const auto refusal = refusals.find(call);
    calls.push_back(refusal == refusals.end() ? call : call + '!');
    if (refusal != refusals.end()) {
        errno = refusal->second;
    }
    return refusal != refusals.end();
}

template <typename Function>
Function* original(Function*, const char* name) {
    return reinterpret_cast<Function*>(::dlsym(RTLD_NEXT, name));
}

} // namespace

namespace ostrelle {

using namespace Qt::StringLiterals;

namespace {

/// Records the calls of one operation, of which some are refused.
Calls callsOf(const std::function<void()>& operation, const std::map<std::string, int>& refused) {
    calls.clear();
    refusals = refused;
    isRecording = true;
    try {
        operation();
    } catch (const FileError& error) {
        calls.push_back("error " + std::to_string(error.code()));
    }
    isRecording = false;
    return calls;
}

} // namespace

TEST(FileCalls, ANameComesAfterTheBytesAndTheFolderAfterTheName) {
    const QTemporaryDir folder;
    const QString old = folder.filePath(u"old.xmp"_s);
    const QString next = folder.filePath(u"new.xmp"_s);
    const auto replace = [&] { replaceFile(old, "new"); };
    const auto edit = [&] { editFile(old, 100, [](const QByteArray& bytes) { return bytes + '.'; }); };
    const auto create = [&] { EXPECT_TRUE(createFile(next, "new")); };
    const struct {
        std::function<void()> operation;
        std::map<std::string, int> refused;
        Calls expected;
    } rows[] = {
        {replace, {}, {"open nameless", "write", "fsync file", "linkat", "rename", "fsync folder"}},
        {edit, {}, {"open nameless", "write", "fsync file", "linkat", "rename", "fsync folder"}},
        {create, {}, {"open nameless", "write", "fsync file", "linkat", "fsync folder"}},
        {replace,
         {{"open nameless", EOPNOTSUPP}},
         {"open nameless!", "open new", "write", "fsync file", "rename", "fsync folder"}},
        {replace,
         {{"linkat", ENOENT}},
         {"open nameless", "write", "fsync file", "linkat!", "open new", "write", "fsync file", "rename",
          "fsync folder"}},
        {create,
         {{"open nameless", EISDIR}, {"linkat", EPERM}},
         {"open nameless!", "open new", "write", "fsync file", "linkat!", "renameat2", "fsync folder"}},
        {create,
         {{"open nameless", EISDIR}, {"linkat", EPERM}, {"renameat2", EINVAL}},
         {"open nameless!", "open new", "write", "fsync file", "linkat!", "renameat2!", "open new", "rename",
          "fsync folder"}},
        {replace,
         {{"fsync file", EIO}},
         {"open nameless", "write", "fsync file!", "error " + std::to_string(EIO)}},
        {create,
         {{"fsync folder", EINVAL}},
         {"open nameless", "write", "fsync file", "linkat", "fsync folder!"}},
        {create,
         {{"fsync folder", EIO}},
         {"open nameless", "write", "fsync file", "linkat", "fsync folder!", "error " + std::to_string(EIO)}},
    };
    for (const auto& row : rows) {
        replaceFile(old, "old");
        QFile::remove(next);
        EXPECT_EQ(callsOf(row.operation, row.refused), row.expected);
    }
}

TEST(FileCalls, WithoutLocksAFileIsAbandonedAfterAnHour) {
    const QTemporaryDir folder;
    const QString path = folder.filePath(u".a.xmp.ostrelle-0123456789abc"_s);
    replaceFile(path, "x");
    for (const int minutes : {59, 61}) {
        const timespec then{.tv_sec = ::time(nullptr) - minutes * 60L, .tv_nsec = 0};
        const timespec times[] = {then, then};
        ASSERT_EQ(::utimensat(AT_FDCWD, QFile::encodeName(path).constData(), times, 0), 0);
        callsOf([&] { EXPECT_EQ(removeAbandonedTemporaryFiles(folder.path()), minutes > 60 ? 1 : 0); },
                {{"flock", ENOLCK}});
        EXPECT_EQ(QFile::exists(path), minutes < 60);
    }
}

} // namespace ostrelle

extern "C" {

int open(const char* path, int flags, ...) {
    const bool isNameless = (flags & O_TMPFILE) == O_TMPFILE;
    mode_t mode = 0;
    if (isNameless || (flags & O_CREAT) != 0) {
        va_list arguments;
        va_start(arguments, flags);
        mode = va_arg(arguments, mode_t);
        va_end(arguments);
    }
    const bool isNew = (flags & O_EXCL) != 0;
    if ((isNameless && isRefused("open nameless")) || (!isNameless && isNew && isRefused("open new"))) {
        return -1;
    }
    return original(&open, "open")(path, flags, mode);
}

ssize_t write(int descriptor, const void* bytes, size_t count) {
    return isRefused("write") ? -1 : original(&write, "write")(descriptor, bytes, count);
}

int fsync(int descriptor) {
    struct stat status{};
    ::fstat(descriptor, &status);
    return isRefused(S_ISDIR(status.st_mode) ? "fsync folder" : "fsync file")
               ? -1
               : original(&fsync, "fsync")(descriptor);
}

int linkat(int fromFolder, const char* from, int toFolder, const char* to, int flags) {
    return isRefused("linkat") ? -1 : original(&linkat, "linkat")(fromFolder, from, toFolder, to, flags);
}

int rename(const char* from, const char* to) noexcept {
    return isRefused("rename") ? -1 : original(&rename, "rename")(from, to);
}

int renameat2(int fromFolder, const char* from, int toFolder, const char* to, unsigned flags) noexcept {
    return isRefused("renameat2") ? -1
                                  : original(&renameat2, "renameat2")(fromFolder, from, toFolder, to, flags);
}

int flock(int descriptor, int operation) noexcept {
    const bool isOfInterest = refusals.contains("flock");
    return isOfInterest && isRefused("flock") ? -1 : original(&flock, "flock")(descriptor, operation);
}

} // extern "C"
