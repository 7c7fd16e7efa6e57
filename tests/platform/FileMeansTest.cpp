// SPDX-License-Identifier: GPL-3.0-or-later
#include "platform/AbandonedFiles.h"
#include "platform/FileError.h"
#include "platform/Files.h"
#include "support/FileFacts.h"
#include "support/FileInFolder.h"
#include "support/FullDisk.h"
#include "support/KilledWriter.h"

#include <sys/file.h>

#include <QFileInfo>
#include <QTemporaryDir>
#include <ctime>

namespace ostrelle {

using namespace Qt::StringLiterals;

namespace {

/// What a file system may offer, from all to nothing. With nothing, a kill can leave a new file empty.
const FileMeans rows[] = {
    {},
    {.namelessFiles = false},
    {.hardLinks = false},
    {.namelessFiles = false, .hardLinks = false, .exclusiveRename = false},
};

const QByteArray one = "One";
const QByteArray other(20'000, 'x');

void setAge(const QString& path, int seconds) {
    setDate(path, {.tv_sec = ::time(nullptr) - seconds, .tv_nsec = 0});
}

} // namespace

TEST(FileMeans, NeitherAKillNorAFullDiskLeavesHalfAFile) {
    for (const FileMeans& means : rows) {
        FileInFolder file(u"a.xmp"_s, one);
        const QString next = file.folder() + u"/b.xmp"_s;
        const auto write = [&] {
            replaceFile(file.path(), other, 0666, means);
            replaceFile(file.path(), one, 0666, means);
            QFile::remove(next);
            EXPECT_TRUE(createFile(next, other, means));
        };
        killWriters(100, write, [&] {
            const qint64 size = QFileInfo(next).size(); // 0 if there is no file
            const bool isMissing = size == 0 && (!means.exclusiveRename || !QFile::exists(next));
            return (file.bytes() == one || file.bytes() == other) && (size == other.size() || isMissing);
        });
        write();
        for (const QString& name : filesIn(file.folder()).filter(u"ostrelle"_s)) {
            setAge(file.folder() + u'/' + name, 61);
        }
        removeAbandonedTemporaryFiles(file.folder());
        for (const rlim_t bytes : {0U, 1U, 19'999U}) {
            const FullDisk disk(bytes);
            EXPECT_THROW(replaceFile(file.path(), other, 0666, means), FileError);
            EXPECT_THROW(createFile(file.folder() + u"/c.xmp"_s, other, means), FileError);
        }
        EXPECT_FALSE(createFile(file.path(), other, means));
        EXPECT_EQ(filesIn(file.folder()), QStringList({u"a.xmp"_s, u"b.xmp"_s}));
        EXPECT_EQ(file.bytes(), one);
    }
}

TEST(AbandonedFiles, OnlyOursThatNobodyWritesAreRemoved) {
    const QTemporaryDir folder;
    const auto make = [&folder](const QString& name, int age) {
        replaceFile(folder.filePath(name), "x");
        setAge(folder.filePath(name), age);
    };
    constexpr int day = 24 * 60 * 60;
    ASSERT_TRUE(QDir(folder.path()).mkdir(u".folder.ostrelle-0123456789abc"_s));
    ASSERT_TRUE(QFile::link(u"none"_s, folder.filePath(u".link.ostrelle-0123456789abc"_s)));
    for (const QString& name : filesIn(folder.path())) {
        setAge(folder.filePath(name), day);
    }
    make(u".young.ostrelle-0123456789abc"_s, 50);
    for (const QStringView name :
         QList<QStringView>{u".held.ostrelle-0123456789abc", u"a.xmp.ostrelle-0123456789abc",
                            u".a.xmp.ostrelle-0123456789ab", u".a.xmp.ostrelle-0123456789abC",
                            u".a.xmp.ostrelle-0123456789abcd", u".a.xmp.0123456789abcdefghijklm",
                            u".ostrelle-0123456789abc", u"ostrelle-notes.txt"}) {
        make(name.toString(), day);
    }
    const QStringList staying = filesIn(folder.path());
    make(u".a.xmp.ostrelle-0123456789abc"_s, 61);

    QFile held(folder.filePath(u".held.ostrelle-0123456789abc"_s));
    ASSERT_TRUE(held.open(QIODevice::ReadOnly) && ::flock(held.handle(), LOCK_EX) == 0);
    EXPECT_EQ(removeAbandonedTemporaryFiles(folder.path()), 1);
    EXPECT_EQ(filesIn(folder.path()), staying);
}

} // namespace ostrelle
