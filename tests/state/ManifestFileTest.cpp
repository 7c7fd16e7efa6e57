// SPDX-License-Identifier: GPL-3.0-or-later
#include "state/ManifestFile.h"

#include "platform/FileError.h"
#include "platform/Files.h"
#include "support/FileFacts.h"
#include "support/FullDisk.h"
#include "support/Unprivileged.h"

#include <gtest/gtest.h>
#include <sys/wait.h>
#include <unistd.h>

#include <QFile>
#include <QSet>
#include <QTemporaryDir>
#include <limits>

namespace ostrelle {

using namespace Qt::StringLiterals;

namespace {

using Entries = QList<ProcessedFileEntry>;

ProcessedFileEntry entry(const QString& name, double date = 750'000'000.125) {
    return {.filename = name, .fileSize = 25'000'000, .modificationDate = date};
}

Entries entries(int from, int count) {
    Entries result;
    for (int number = from; number < from + count; ++number) {
        result.append(entry(u"IMG_%1.CR3"_s.arg(number), 750'000'000 + number / 7.0));
    }
    return result;
}

QSet<ProcessedFileEntry> setOf(const Entries& list) {
    return {list.begin(), list.end()};
}

class ManifestFileTest : public testing::Test {
protected:
    Entries stored() const { return ManifestFile(path).load(); }
    void write(const QByteArray& bytes) const { replaceFile(path, bytes); }
    QByteArray bytes(const QString& suffix = {}) const { return contentsOf(path + suffix); }

    QTemporaryDir folder;
    QString path = folder.filePath(u"processed_files.json"_s);
    ManifestFile file{path};
};

TEST_F(ManifestFileTest, IsAnArrayOfObjectsOfThreeKeys) {
    file.append({entry(u"a \"b\" \u00e9.CR3"_s, 750'000'000.25)});
    file.append({entry(u"c.JPG"_s, -1)});
    EXPECT_EQ(bytes(), R"([{"fileSize":25000000,"filename":"a \"b\" é.CR3","modificationDate":750000000.25},)"
                       R"({"fileSize":25000000,"filename":"c.JPG","modificationDate":-1}])");
}

TEST_F(ManifestFileTest, ValuesComeBackExactly) {
    Entries written;
    for (const double date : {0.0, -0.0, 0.1, 1.0 / 3, 751'234'567.123456789, 1e300, 5e-324, -978'307'200.5,
                              std::nextafter(751'234'567.0, 1e9), std::numeric_limits<double>::max()}) {
        written.append(entry(u"d"_s, date));
    }
    for (const qint64 size :
         {std::numeric_limits<qint64>::max(), std::numeric_limits<qint64>::min(), (1LL << 53) + 1, 0LL}) {
        written.append({.filename = u"s"_s, .fileSize = size, .modificationDate = 0.5});
    }
    for (const QString& name : {u""_s, u"\\u0041\n\t\x01\x7f"_s, u"\U0001F4F7 e\u0301.jpg"_s, u"],[{}"_s,
                                QString(255, u'n'), u"broken \ufffd name"_s}) {
        written.append(entry(name));
    }
    file.append(written);
    EXPECT_EQ(stored(), written);
}

TEST_F(ManifestFileTest, OneBadEntryMakesTheFileInvalid) {
    const QByteArray good = R"({"filename":"a","fileSize":1,"modificationDate":2})";
    write('[' + good + ']');
    ASSERT_EQ(stored(), Entries({{.filename = u"a"_s, .fileSize = 1, .modificationDate = 2}}));
    QByteArrayList bad = QByteArray("|null|{}|[|[1]|[[]]|[null]|[{}]").split('|');
    bad << good << '[' + good << '[' + good + ",]" << '[' + good + "]x"
        << '[' + good + R"(,{"filename":"a"}])" << QByteArray(100'000, '[') << QByteArray(3, '\0');
    const auto addWith = [&bad, &good](const char* part, const char* replacement) {
        bad.append('[' + QByteArray(good).replace(part, replacement) + ']');
    };
    for (const char* member : {R"("filename":"a",)", R"("fileSize":1,)", R"(,"modificationDate":2)"}) {
        addWith(member, "");
    }
    for (const char* name : {"1", "null", "\"\xff\""}) {
        addWith(R"("a")", name);
    }
    for (const char* size : {R"("1")", "1.5", "1e19", "true"}) {
        addWith("1", size);
    }
    for (const char* date : {R"("2")", "NaN", "1e999"}) {
        addWith("2", date);
    }
    for (const QByteArray& contents : bad) {
        write(contents);
        EXPECT_THROW(stored(), Error) << contents.left(100).constData();
    }
}

TEST_F(ManifestFileTest, WhatOthersWroteStaysAsItIs) {
    for (const QByteArray& empty : {QByteArray("[]"), QByteArray(" [ \n] ")}) {
        write(empty);
        ManifestFile again(path);
        again.load();
        again.append({entry(u"a"_s)});
        EXPECT_EQ(stored(), Entries({entry(u"a"_s)}));
    }
    const QByteArray old =
        "[ {\"modificationDate\": 2.0, \"filename\": \"x\", \"fileSize\": 1.0, \"more\": 3}";
    write(old + "\n]\n");
    ManifestFile again(path);
    ASSERT_EQ(again.load().size(), 1);
    again.append({entry(u"a"_s)});
    EXPECT_TRUE(bytes().startsWith(old));
    EXPECT_EQ(stored().size(), 2);
}

TEST_F(ManifestFileTest, TooLargeAFileIsNotRead) {
    write("[]");
    ASSERT_EQ(::truncate(path.toLocal8Bit().constData(), ManifestFile::largestFile + 1), 0);
    EXPECT_THROW(stored(), FileError);
}

TEST_F(ManifestFileTest, ProcessesThatShareTheFileKeepEachOthersEntries) {
    file.append(entries(0, 2));
    ManifestFile other(path);
    EXPECT_EQ(other.load().size(), 2);
    EXPECT_EQ(other.append(entries(2, 1)).foreign, Entries());
    EXPECT_EQ(file.append(entries(3, 1)).foreign, entries(2, 1));
    EXPECT_EQ(other.append(entries(3, 1) + entries(4, 1)).foreign,
              entries(3, 1)); // entry 3 is written only once
    EXPECT_EQ(file.append({}).foreign, entries(4, 1));
    EXPECT_EQ(stored(), entries(0, 5));
}

TEST_F(ManifestFileTest, AFileThatIsSetBackIsCompletedAgain) {
    file.append(entries(0, 3));
    const QByteArray old = bytes();
    file.append(entries(3, 3));
    write(old);
    EXPECT_EQ(file.append(entries(6, 1)).foreign, Entries());
    EXPECT_EQ(setOf(stored()), setOf(entries(0, 7)));
    ASSERT_TRUE(QFile::remove(path));
    file.append({});
    EXPECT_EQ(setOf(stored()), setOf(entries(0, 7)));
    ManifestFile foreign(path); // writes without reading the old file
    write("[]");
    foreign.append(entries(9, 1));
    EXPECT_EQ(file.append({}).foreign, entries(9, 1));
    EXPECT_EQ(setOf(stored()), setOf(entries(0, 7) + entries(9, 1)));
}

TEST_F(ManifestFileTest, ADamagedFileIsSetAsideWhenItIsReplaced) {
    for (const char* suffix : {".broken", ".broken.1", ".broken.2", ".broken.3", ".broken.4"}) {
        write(QByteArray("damaged ") + suffix);
        ManifestFile fresh(path);
        EXPECT_THROW(fresh.load(), Error);
        EXPECT_EQ(bytes(), QByteArray("damaged ") + suffix);
        EXPECT_TRUE(fresh.append(entries(0, 1)).isNothingLost);
        EXPECT_EQ(bytes(QLatin1StringView(suffix)), QByteArray("damaged ") + suffix);
        EXPECT_EQ(stored(), entries(0, 1));
    }
    write("damaged once more");
    EXPECT_FALSE(file.append(entries(0, 1)).isNothingLost);
    EXPECT_EQ(stored(), entries(0, 1));
    EXPECT_EQ(bytes(u".broken"_s), "damaged .broken");
    EXPECT_EQ(filesIn(folder.path()).size(), 7); // including the lock file
}

TEST_F(ManifestFileTest, AFileThatIsDamagedMeanwhileIsReplacedByAllThatIsKnown) {
    file.append(entries(0, 3));
    const QByteArray whole = bytes();
    for (const QByteArray& contents : {whole.chopped(1) + ",]", whole.chopped(1) + ",1]", whole.chopped(1)}) {
        write(contents);
        EXPECT_EQ(file.append({}).foreign, Entries());
        EXPECT_EQ(stored(), entries(0, 3)) << contents.right(20).constData();
    }
    EXPECT_EQ(bytes(u".broken.2"_s), whole.chopped(1));
}

TEST(ManifestFile, AFileThatMayNotBeReadIsSetAsideUnlessItCanBeReadByThen) {
    for (const bool canBeRead : {false, true}) {
        const UnprivilegedFolder folder;
        const QString path = folder.filePath(u"processed_files.json"_s);
        ManifestFile(path).append(entries(0, 3));
        setMode(path, 0);
        ManifestFile file(path);
        EXPECT_THROW(file.load(), FileError);
        setMode(folder.path(), 0555);
        EXPECT_THROW(file.append(entries(3, 1)), FileError);
        setMode(folder.path(), 0755);
        setMode(path, canBeRead ? 0600 : 0);
        EXPECT_EQ(file.append(entries(4, 1)).foreign, canBeRead ? entries(0, 3) : Entries());
        EXPECT_EQ(ManifestFile(path).load(), entries(canBeRead ? 0 : 3, canBeRead ? 5 : 2));
        const QString aside = path + u".broken"_s;
        ASSERT_EQ(QFile::exists(aside), !canBeRead);
        if (!canBeRead) {
            setMode(aside, 0600);
            EXPECT_EQ(ManifestFile(aside).load(), entries(0, 3));
        }
    }
}

TEST_F(ManifestFileTest, AFullDiskLeavesTheOldFileAndTheNextSaveWritesEverything) {
    file.append(entries(0, 10));
    const QByteArray before = bytes();
    ManifestFile other(path);
    other.append(entries(10, 1));
    const QByteArray withOther = bytes();
    {
        const FullDisk disk(static_cast<rlim_t>(before.size()));
        EXPECT_THROW(file.append(entries(20, 5)), FileError);
        EXPECT_THROW(file.append(entries(30, 5)), FileError);
    }
    EXPECT_EQ(bytes(), withOther);
    EXPECT_EQ(file.append({}).foreign, entries(10, 1)); // reported late, but not lost
    EXPECT_EQ(setOf(stored()), setOf(entries(0, 11) + entries(20, 5) + entries(30, 5)));
}

TEST_F(ManifestFileTest, ProcessesThatWriteAtTheSameTimeLoseNothing) {
    constexpr int count = 60;
    const auto appendOneByOne = [this](int from) {
        ManifestFile own(path);
        for (int number = from; number < from + count; ++number) {
            own.append(entries(number, 1));
        }
    };
    const pid_t child = ::fork();
    ASSERT_GE(child, 0);
    if (child == 0) {
        appendOneByOne(count);
        ::_exit(0);
    }
    appendOneByOne(0);
    ::waitpid(child, nullptr, 0);
    EXPECT_EQ(stored().size(), 2 * count);
    EXPECT_EQ(setOf(stored()), setOf(entries(0, 2 * count)));
}

} // namespace

} // namespace ostrelle
