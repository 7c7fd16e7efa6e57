// SPDX-License-Identifier: GPL-3.0-or-later
#include "platform/AbandonedFiles.h"
#include "platform/FileError.h"
#include "platform/Files.h"
#include "support/FileInFolder.h"
#include "support/FullDisk.h"
#include "support/KilledWriter.h"

#include <fcntl.h>
#include <sys/file.h>
#include <sys/stat.h>

#include <QFileInfo>
#include <QTemporaryDir>
#include <chrono>
#include <ctime>

namespace ostrelle {

using namespace std::chrono_literals;

namespace {

/// What a file system may offer, from all to nothing.
struct Row {
    const char* name;
    FileMeans means;
    bool leavesEmptyFile = false; ///< when a new file's writer is killed
};

class FileMeansTest : public testing::TestWithParam<Row> {
protected:
    QStringList strangers() const { return strangersBeside(file.folder(), u"a.xmp"_s); }
    QStringList hiddenFiles() const {
        return QDir(file.folder()).entryList({u".*"_s}, QDir::Files | QDir::Hidden);
    }

    const QByteArray one = "One";
    const QByteArray other = QByteArray(20'000, 'x');
    FileInFolder file{u"a.xmp"_s, one};
    FileMeans means = GetParam().means;
};

void makeOlder(const QString& path, std::chrono::seconds age) {
    const timespec then{.tv_sec = ::time(nullptr) - age.count(), .tv_nsec = 0};
    const timespec times[] = {then, then};
    ASSERT_EQ(::utimensat(AT_FDCWD, QFile::encodeName(path).constData(), times, AT_SYMLINK_NOFOLLOW), 0);
}

} // namespace

TEST_P(FileMeansTest, AKillLeavesTheOldFileOrTheNewOne) {
    int hidden = 0;
    const auto writeBoth = [this] {
        replaceFile(file.path(), other, 0666, means);
        replaceFile(file.path(), one, 0666, means);
    };
    killWriters(100, writeBoth, [&] {
        hidden += hiddenFiles().isEmpty() ? 0 : 1;
        return (file.bytes() == one || file.bytes() == other) && strangers().isEmpty();
    });
    for (const QString& name : hiddenFiles()) {
        makeOlder(QFileInfo(file.path()).dir().filePath(name), 61s);
    }
    EXPECT_EQ(removeAbandonedTemporaryFiles(file.folder()) > 0, hidden > 0);
    EXPECT_EQ(hiddenFiles(), QStringList());
}

TEST_P(FileMeansTest, AKillLeavesNoFileOrAWholeNewOne) {
    int there = 0;
    const auto create = [this] {
        QFile::remove(file.path());
        createFile(file.path(), other, means);
    };
    killWriters(100, create, [&] {
        const bool exists = QFileInfo::exists(file.path());
        there += exists ? 1 : 0;
        const bool isWhole = file.bytes() == other || (GetParam().leavesEmptyFile && file.bytes().isEmpty());
        return (!exists || isWhole) && strangers().isEmpty();
    });
    EXPECT_GT(there, 0) << "the writer never got to write";
}

TEST_P(FileMeansTest, AFullDiskLeavesTheOldFileAndNothingElse) {
    const QString next = QFileInfo(file.path()).dir().filePath(u"b.xmp"_s);
    for (const rlim_t bytes : {0U, 1U, 19'999U}) {
        const FullDisk disk(bytes);
        EXPECT_THROW(replaceFile(file.path(), other, 0666, means), FileError);
        EXPECT_THROW(createFile(next, other, means), FileError);
    }
    EXPECT_EQ(file.bytes(), one);
    EXPECT_EQ(QDir(file.folder()).entryList(QDir::Files | QDir::Hidden), QStringList(u"a.xmp"_s));
}

TEST_P(FileMeansTest, ANewFileNeverTakesThePlaceOfAnother) {
    EXPECT_FALSE(createFile(file.path(), other, means));
    EXPECT_EQ(file.bytes(), one);
    ASSERT_TRUE(QFile::remove(file.path()));
    EXPECT_TRUE(createFile(file.path(), other, means));
    EXPECT_EQ(file.bytes(), other);
    EXPECT_EQ(hiddenFiles(), QStringList());
    EXPECT_THROW(createFile(file.folder() + u"/none/a.xmp"_s, other, means), FileError);
}

INSTANTIATE_TEST_SUITE_P(
    , FileMeansTest,
    testing::Values(
        Row{"all", {}}, Row{"noNamelessFiles", {.namelessFiles = false}},
        Row{"namelessFilesThatCannotBeLinked", {.hardLinks = false}},
        Row{"none", {.namelessFiles = false, .hardLinks = false, .exclusiveRename = false}, true}),
    [](const testing::TestParamInfo<Row>& info) { return std::string(info.param.name); });

TEST(AbandonedFiles, OnlyOursThatNobodyWritesAreRemoved) {
    const QString ours = u".a.xmp.ostrelle-0123456789abc"_s;
    const struct {
        QString name;
        std::chrono::seconds age;
        bool isRemoved;
    } rows[] = {
        {ours, 61s, true},
        {u".b.xmp.ostrelle-zzzzzzzzzzzzz"_s, 59s, false},
        {u".held.xmp.ostrelle-0123456789abc"_s, 24h, false},
        {u"a.xmp.ostrelle-0123456789abc"_s, 24h, false},
        {u".a.xmp.ostrelle-0123456789ab"_s, 24h, false},
        {u".a.xmp.ostrelle-0123456789abC"_s, 24h, false},
        {u".a.xmp.ostrelle-0123456789abcd"_s, 24h, false},
        {u".a.xmp.0123456789abcdefghijklm"_s, 24h, false},
        {u".ostrelle-0123456789abc"_s, 24h, false},
        {u"ostrelle-notes.txt"_s, 24h, false},
    };
    const QTemporaryDir folder;
    QStringList staying{u".folder.ostrelle-0123456789abc"_s, u".link.ostrelle-0123456789abc"_s};
    ASSERT_TRUE(QDir(folder.path()).mkdir(staying[0]));
    ASSERT_TRUE(QFile::link(u"ostrelle-notes.txt"_s, folder.filePath(staying[1])));
    for (const QString& name : staying) {
        makeOlder(folder.filePath(name), 24h);
    }
    for (const auto& row : rows) {
        replaceFile(folder.filePath(row.name), "x");
        makeOlder(folder.filePath(row.name), row.age);
        if (!row.isRemoved) {
            staying.append(row.name);
        }
    }
    QFile held(folder.filePath(u".held.xmp.ostrelle-0123456789abc"_s));
    ASSERT_TRUE(held.open(QIODevice::ReadOnly));
    ASSERT_EQ(::flock(held.handle(), LOCK_EX), 0);
    EXPECT_EQ(removeAbandonedTemporaryFiles(folder.path()), 1);
    QStringList found = QDir(folder.path()).entryList(QDir::AllEntries | QDir::Hidden | QDir::NoDotAndDotDot);
    found.sort();
    staying.sort();
    EXPECT_EQ(found, staying);
    EXPECT_EQ(removeAbandonedTemporaryFiles(folder.filePath(u"none"_s)), 0);
}

} // namespace ostrelle
