// SPDX-License-Identifier: GPL-3.0-or-later
#include "platform/Files.h"

#include "platform/FileError.h"
#include "platform/SettledReading.h"
#include "support/Failure.h"
#include "support/FileFacts.h"
#include "support/FileInFolder.h"
#include "support/Unprivileged.h"

#include <gtest/gtest.h>
#include <sys/xattr.h>
#include <unistd.h>

#include <QFileInfo>
#include <QTemporaryDir>
#include <cerrno>
#include <functional>
#include <tuple>

namespace ostrelle {

using namespace Qt::StringLiterals;

namespace {

using FileWrite = std::function<void(const QByteArray& bytes)>;

int codeOf(const std::function<void()>& operation) {
    return failureIn<FileError>(operation).code();
}

const Pause noPause = [](std::chrono::milliseconds) {};

} // namespace

TEST(Files, AReplacedFileKeepsModeOwnerAndExtendedAttributes) {
    const QTemporaryDir folder;
    const QString path =
        folder.filePath(QString(246, u'n') + u" 1 \u00E9.xmp"_s); // the longest possible name
    replaceFile(path, "old");
    const QByteArray native = QFile::encodeName(path);
    setMode(path, 0640);
    const bool hasAttributes = ::setxattr(native.constData(), "user.rating", "5", 1, 0) == 0;
    [[maybe_unused]] const int onlyByRoot = ::chown(native.constData(), 1234, 2345);
    struct stat before{};
    struct stat after{};
    ASSERT_EQ(::stat(native.constData(), &before), 0);
    replaceFile(path, "new");
    ASSERT_EQ(::stat(native.constData(), &after), 0);
    EXPECT_EQ(contentsOf(path), "new");
    EXPECT_EQ(std::tie(after.st_mode, after.st_uid, after.st_gid),
              std::tie(before.st_mode, before.st_uid, before.st_gid));
    char value = hasAttributes ? '?' : '5';
    EXPECT_EQ(::getxattr(native.constData(), "user.rating", &value, 1), hasAttributes ? 1 : -1);
    EXPECT_EQ(value, '5');
    EXPECT_EQ(filesIn(folder.path()).size(), 1);
}

TEST(Files, ASymbolicLinkStaysAndItsTargetIsReplaced) {
    const QTemporaryDir folder;
    ASSERT_TRUE(QDir(folder.path()).mkdir(u"real"_s));
    const QString target = folder.filePath(u"real/a.xmp"_s);
    const QString link = folder.filePath(u"b.xmp"_s);
    replaceFile(target, "old");
    ASSERT_TRUE(QFile::link(u"real/a.xmp"_s, link));
    replaceFile(link, "new");
    EXPECT_TRUE(QFileInfo(link).isSymLink());
    EXPECT_EQ(contentsOf(target), "new");
}

TEST(Files, SaysWhyAFileCannotBeReadOrWritten) {
    const UnprivilegedFolder folder;
    const QString path = folder.filePath(u"a.xmp"_s);
    replaceFile(path, "0123456789");
    EXPECT_EQ(codeOf([&] { readFile(path, 9); }), EFBIG);
    EXPECT_EQ(codeOf([&] { readFile(folder.path(), 100); }), EISDIR);
    EXPECT_EQ(codeOf([&] { readFile(folder.filePath(u"none"_s), 100); }), ENOENT);
    EXPECT_EQ(codeOf([&] { readFile(u"/dev/zero"_s, 100); }), EINVAL);

    setMode(path, 0444);
    EXPECT_EQ(codeOf([&] { replaceFile(path, "new"); }), EACCES) << "a write-protected file";
    setMode(path, 0);
    EXPECT_EQ(codeOf([&] { readFile(path, 100); }), EACCES);
    setMode(path, 0644);
    setMode(folder.path(), 0555);
    EXPECT_EQ(codeOf([&] { replaceFile(path, "new"); }), EACCES) << "a read-only folder";
    setMode(folder.path(), 0755);
    EXPECT_EQ(readFile(path, 10), "0123456789");
}

TEST(Files, AnEditTakesInWhatAnotherProgramWritesMeanwhile) {
    const QTemporaryDir folder;
    const QString path = folder.filePath(u"a.xmp"_s);
    const auto inPlace = [&path](const QByteArray& bytes) { writeFile(path, bytes); };
    const auto byRename = [&path](const QByteArray& bytes) { replaceFile(path, bytes); };
    for (const FileWrite& write : {FileWrite(inPlace), FileWrite(byRename)}) {
        replaceFile(path, "old");
        int edits = 0;
        editFile(
            path, 100,
            [&](const QByteArray& bytes) {
                if (++edits == 1) {
                    write("theirs");
                }
                return bytes + ", ours";
            },
            noPause);
        EXPECT_EQ(edits, 2);
        EXPECT_EQ(contentsOf(path), "theirs, ours");

        edits = 0;
        const auto fail = [&] {
            editFile(
                path, 100,
                [&](const QByteArray& bytes) {
                    write(QByteArray(++edits, 't'));
                    return bytes + ", ours";
                },
                noPause);
        };
        EXPECT_EQ(codeOf(fail), EBUSY) << "a file that changes each time";
        EXPECT_EQ(edits, 3);
        EXPECT_EQ(contentsOf(path), "ttt");
        EXPECT_EQ(filesIn(folder.path()).size(), 1);
    }
}

TEST(Files, AFileThatIsBeingWrittenIsReadAgain) {
    const struct {
        const char* what;
        QByteArrayList writtenMeanwhile; ///< one during each pause
        QList<int> pauses;
        QByteArray read; ///< empty if it fails
    } rows[] = {
        {"whole from the start", {}, {}, "whole"},
        {"half, then whole", {"whole"}, {50}, "whole"},
        {"slowly", {"half of it", "whole"}, {50, 200}, "whole"},
        {"never whole", {"half of it", "half of all", "whole"}, {50, 200}, ""},
        {"damaged", {}, {50}, ""},
    };
    const auto parse = [](const StampedBytes& file) {
        if (file.bytes != "whole") {
            throw Error(u"It is cut short."_s);
        }
        return file.bytes;
    };
    for (const auto& row : rows) {
        const FileInFolder file(u"a.xmp"_s, row.pauses.isEmpty() ? "whole" : "half");
        QByteArrayList toWrite = row.writtenMeanwhile;
        QList<int> pauses;
        const Pause pause = [&](std::chrono::milliseconds span) {
            pauses.append(static_cast<int>(span.count()));
            if (!toWrite.isEmpty()) {
                replaceFile(file.path(), toWrite.takeFirst());
            }
        };
        QByteArray read;
        try {
            read = readSettled(file.path(), 100, parse, pause);
        } catch (const Error&) {
        }
        EXPECT_EQ(read, row.read) << row.what;
        EXPECT_EQ(pauses, row.pauses) << row.what;
    }
    const FileInFolder file(u"a.xmp"_s, "half");
    editFile(file.path(), 100, StampedFileEdit(parse),
             [&](std::chrono::milliseconds) { replaceFile(file.path(), "whole"); });
    EXPECT_EQ(file.bytes(), "whole");
}

TEST(Files, AnEditDoesNotBringBackAFileThatIsRemovedMeanwhile) {
    const QTemporaryDir folder;
    const QString path = folder.filePath(u"a.xmp"_s);
    replaceFile(path, "old");
    const auto remove = [&path](const QByteArray& bytes) {
        QFile::remove(path);
        return bytes;
    };
    EXPECT_EQ(codeOf([&] { editFile(path, 100, remove, noPause); }), ENOENT);
    EXPECT_EQ(filesIn(folder.path()).size(), 0);
}

} // namespace ostrelle
