// SPDX-License-Identifier: GPL-3.0-or-later
// The order in which the program flushes a file and gives it its name. The functions at the end of this file
// replace the C library's and record the calls.
#include "platform/FileError.h"
#include "platform/Files.h"

#include <dlfcn.h>
#include <gtest/gtest.h>
#include <sys/stat.h>

#include <QTemporaryDir>
#include <functional>
#include <string>

namespace {

std::string calls;     // each followed by a space
int folderRefusal = 0; // errno

template <typename Function, typename... Arguments>
int call(Function*, const char* name, Arguments... arguments) {
    calls += std::string(name) + ' ';
    return reinterpret_cast<Function*>(::dlsym(RTLD_NEXT, name))(arguments...);
}

} // namespace

namespace ostrelle {

using namespace Qt::StringLiterals;

TEST(FileCalls, ANameComesAfterTheBytesAndTheFolderAfterTheName) {
    for (const int refusal : {0, EINVAL, EIO}) {
        const QTemporaryDir folder;
        folderRefusal = refusal;
        const std::string end = refusal == EIO ? "error" : "";
        const auto callsOf = [](const std::function<void()>& operation) {
            calls.clear();
            try {
                operation();
            } catch (const FileError&) {
                calls += "error";
            }
            return calls;
        };
        EXPECT_EQ(callsOf([&] { createFile(folder.filePath(u"a.xmp"_s), "new"); }),
                  "fsync linkat folder " + end);
        EXPECT_EQ(callsOf([&] { replaceFile(folder.filePath(u"a.xmp"_s), "new"); }),
                  "fsync linkat rename folder " + end);
    }
}

} // namespace ostrelle

extern "C" {

int fsync(int file) {
    struct stat status{};
    ::fstat(file, &status);
    if (!S_ISDIR(status.st_mode)) {
        return call(&fsync, "fsync", file);
    }
    calls += "folder ";
    errno = folderRefusal;
    return folderRefusal == 0 ? 0 : -1;
}

int linkat(int fromFolder, const char* from, int toFolder, const char* to, int flags) {
    return call(&linkat, "linkat", fromFolder, from, toFolder, to, flags);
}

int rename(const char* from, const char* to) noexcept {
    return call(&rename, "rename", from, to);
}

} // extern "C"
