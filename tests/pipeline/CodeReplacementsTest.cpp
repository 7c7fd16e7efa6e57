// SPDX-License-Identifier: GPL-3.0-or-later
#include "pipeline/CodeReplacements.h"

#include "core/Text.h"
#include "pipeline/CodeReplacementsReading.h"
#include "pipeline/PipelineFixture.h"

#include <gtest/gtest.h>

#include <QTemporaryDir>

namespace ostrelle {

using namespace Qt::StringLiterals;

TEST(CodeReplacements, ARosterWhoseNamesAreOfNoUseSaysWhy) {
    const QTemporaryDir folder;
    const QString path = folder.filePath(u"roster.txt"_s);
    const struct {
        QByteArray bytes;
        QString problem;
    } rows[] = {
        {"12\tJ\xC3\xB8rgen\n", {}},
        {"12\tJ\xF8rgen\n",
         u"The names in roster.txt will not be used: it is not UTF-8. Save it as UTF-8."_s},
        {"\xEF\xBB\xBF \n", u"There are no names in roster.txt: it is empty."_s},
        {"12 Smith\n\tJones\n",
         u"There may be no names in roster.txt: no line has a number, a tab and a name."_s},
        {QByteArray(17 * 1024 * 1024, 'x'),
         u"The names in roster.txt will not be used: it is larger than 16 MB."_s},
    };
    for (const auto& row : rows) {
        QFile file(path);
        ASSERT_TRUE(file.open(QIODevice::WriteOnly));
        file.write(row.bytes);
        file.close();
        EXPECT_EQ(rosterProblem(path), row.problem);
    }
    QFile::remove(path);
    EXPECT_EQ(rosterProblem(path),
              u"The names in roster.txt will not be used: it cannot be read (No such file or directory)."_s);
}

TEST(CodeReplacements, CountsLinesAndKeys) {
    const struct {
        QByteArray bytes;
        qsizetype lines;
        qsizetype characters;
        qsizetype keys;
        QStringList samples;
    } rows[] = {
        {"", 0, 0, 0, {}},
        {"12\tJohn Smith", 1, 13, 1, {u"12"_s}},
        {"\xEF\xBB\xBF"
         "12\tA\r\n\r\n13\tB\r\n",
         2,
         11,
         2,
         {u"12"_s, u"13"_s}}, // after a byte-order mark
        {"a comment\n\tno key\n \t \n", 3, 22, 0, {}},
        {" 44 \tA\n44\tB\tC\n", 2, 14, 1, {u"44"_s}},
        {"1\t\v2\t\f3\t\r4\t\xC2\x85"
         "5\t\xE2\x80\xA8"
         "6\t\xE2\x80\xA9"
         "7\t\n8\t",
         8,
         23,
         8,
         {u"1"_s, u"2"_s, u"3"_s, u"4"_s, u"5"_s, u"6"_s}},
        {"7\te\xCC\x81\xF0\x9F\x91\x8D\xF0\x9F\x8F\xBD\n",
         1,
         5,
         1,
         {u"7"_s}},                    // é and a thumb with a skin tone
        {"J\xF8rgen\tX", 0, 0, 0, {}}, // Latin-1
        {QByteArray("\xFF\xFE"
                    "1\0\t\0",
                    6),
         0,
         0,
         0,
         {}},                               // UTF-16
        {"12\tJohn \xE2\x80", 0, 0, 0, {}}, // cut short
    };
    for (const auto& row : rows) {
        const CodeReplacements replacements = parseCodeReplacements(row.bytes);
        const std::string name = row.bytes.toStdString();
        EXPECT_EQ(replacements.lineCount, row.lines) << name;
        EXPECT_EQ(replacements.characterCount, row.characters) << name;
        EXPECT_EQ(replacements.uniqueKeyCount, row.keys) << name;
        EXPECT_EQ(replacements.sampleKeys, row.samples) << name;
    }
}

TEST(CodeReplacements, CutsALongRosterBetweenTwoEntries) {
    const QString family = u"\U0001F468\u200D\U0001F469\u200D\U0001F467"_s;
    const auto letters = [](qsizetype count) { return QString(count, u'x'); };
    const struct {
        const char* name;
        QString text;
        QString roster;
        bool isTruncated;
    } rows[] = {
        {"just fits", letters(19'999) + u'\n', letters(19'999) + u'\n', false},
        {"one too many", letters(19'000) + u'\n' + letters(1'000), letters(19'000), true},
        {"a line that ends at the limit", letters(19'999) + u"\nx"_s, letters(19'999), true},
        {"no line feed", letters(25'000), letters(20'000), true},
        {"a line feed behind the limit", letters(20'000) + u"\nx"_s, letters(20'000), true},
        {"nothing before the line feed", u'\n' + letters(20'000), QString(), true},
        {"a line end of two code units", letters(10) + u"\r\n"_s + letters(20'000), letters(10), true},
        {"characters of many code units", family.repeated(20'000), family.repeated(20'000), false},
        {"too many of them", family.repeated(20'001), family.repeated(20'000), true},
    };
    for (const auto& row : rows) {
        const CodeReplacements replacements = parseCodeReplacements(row.text.toUtf8());
        EXPECT_EQ(replacements.roster == row.roster, true) << row.name;
        EXPECT_EQ(replacements.isTruncated(), row.isTruncated) << row.name;
        EXPECT_EQ(replacements.characterCount, characterCount(row.text)) << row.name;
        EXPECT_EQ(replacements.rosterCharacterCount, characterCount(row.roster)) << row.name;
        const QString block = codeReplacementsBlock(replacements, PromptLibrary::Prompt::singleImage, false);
        EXPECT_EQ(block.contains(promptLiteral(u"codeReplacementsTruncationNote")), row.isTruncated)
            << row.name;
        EXPECT_TRUE(block.endsWith(u"\nCode Replacements:\n"_s + row.roster + u'\n')) << row.name;
    }
    const CodeReplacements cut = parseCodeReplacements(QByteArray(25'000, 'x'));
    EXPECT_EQ(truncationWarning(cut),
              u"[Analyzer] WARNING: Code Replacements file is very large (25000 chars). Truncated to 20000 "
              "chars to prevent token limit issues."_s);
    EXPECT_EQ(truncationLogLine(cut),
              u"[Analyzer] Code Replacements truncated from 25000 to 20000 characters"_s);
    EXPECT_EQ(codeReplacementsBlock({}, PromptLibrary::Prompt::batch, true), QString());
}

TEST(CodeReplacements, SaysInTheLogWhatTheModelGets) {
    EXPECT_EQ(logLines({}), QStringList{u"[Analyzer] Code Replacements present: NO"_s});
    const QByteArray entries = "12\tSam Abel\n44\tJo Bell\n" + QByteArray(600, 'x');
    EXPECT_EQ(logLines(parseCodeReplacements(entries)),
              (QStringList{
                  u"[Analyzer] Code Replacements present: YES — 3 lines, 623 characters, 2 unique keys"_s,
                  u"[Analyzer] Code Replacements sample keys: 12, 44"_s,
                  u"[Analyzer] Code Replacements preview (first 500 chars):\n12\tSam Abel\n44\tJo Bell\n"_s +
                      QString(477, u'x')}));
}

TEST(CodeReplacements, AreDiscoveredUnderThreeNames) {
    const QTemporaryDir folder;
    const QTemporaryDir other;
    const auto path = [&folder](const QString& name) { return folder.filePath(name); };
    const auto make = [&path](const QString& name) {
        QFile file(path(name));
        EXPECT_TRUE(file.open(QIODevice::WriteOnly));
    };
    make(u"roster.txt"_s);
    EXPECT_TRUE(QDir(folder.path()).mkpath(u"deeper"_s));
    make(u"deeper/code-replacements.txt"_s);
    EXPECT_EQ(findCodeReplacementsFile(folder.path()), std::nullopt);
    EXPECT_FALSE(hasCodeReplacementsFile(std::nullopt, folder.path()));
    EXPECT_TRUE(hasCodeReplacementsFile(path(u"gone.txt"_s), folder.path())) << "selected is enough";
    // From the last choice to the first.
    for (const QString& name :
         {u"codereplacements.txt"_s, u"code_replacements.txt"_s, u"code-replacements.txt"_s}) {
        make(name);
        EXPECT_EQ(findCodeReplacementsFile(folder.path()), path(name));
        EXPECT_TRUE(hasCodeReplacementsFile(std::nullopt, folder.path()));
    }
    EXPECT_FALSE(hasCodeReplacementsFile(std::nullopt, other.path()));
    EXPECT_FALSE(resolveCodeReplacementsFile(std::nullopt, std::nullopt));
    const auto discovered = resolveCodeReplacementsFile(std::nullopt, folder.path());
    ASSERT_TRUE(discovered);
    EXPECT_FALSE(discovered->isManuallySelected);
    const auto selected = resolveCodeReplacementsFile(path(u"roster.txt"_s), folder.path());
    ASSERT_TRUE(selected);
    EXPECT_TRUE(selected->isManuallySelected);
    EXPECT_EQ(selected->path, path(u"roster.txt"_s));
}

class RosterTest : public PipelineTest {
protected:
    CodeReplacements read() { return await(readRoster(settings, threads, access, log)).replacements; }
};

TEST_F(RosterTest, IsReadFromTheSelectedFileAndElseFromTheIngestFolder) {
    settings.setIngestFolder(folder.path());
    const QString discovered = write(u"code_replacements.txt"_s, "9\tDana Cole\n");
    EXPECT_EQ(read().sampleKeys, QStringList{u"12"_s});
    EXPECT_TRUE(hasLogged(u"[Analyzer] Using manually selected code replacements file: "_s +
                          folder.filePath(u"roster.txt"_s)));
    settings.setCodeReplacementsFile(std::nullopt);
    EXPECT_EQ(read().sampleKeys, QStringList{u"9"_s});
    EXPECT_TRUE(hasLogged(u"[Analyzer] Using auto-discovered code replacements file: "_s + discovered));
    EXPECT_EQ(access.begun, 2);
    EXPECT_EQ(access.ended, 2);
    EXPECT_EQ(console.lines.filter(u"[Analyzer]"_s), QStringList());
}

TEST_F(RosterTest, IsEmptyWhenThereIsNoneOrItCannotBeRead) {
    write(u"roster.txt"_s, "J\xF8rgen\tX");
    EXPECT_EQ(read().characterCount, 0);
    EXPECT_EQ(logFile().size(), 1) << "bytes that are no text are not worth a line";
    settings.setCodeReplacementsFile(folder.filePath(u"gone.txt"_s));
    EXPECT_EQ(read().characterCount, 0);
    const QStringList told = console.lines.filter(u"[Analyzer]"_s);
    ASSERT_EQ(told.size(), 1);
    EXPECT_TRUE(told.first().startsWith(u"[Analyzer] Failed to read Code Replacements file: "_s));
    EXPECT_TRUE(hasLogged(told.first()));
    settings.setCodeReplacementsFile(std::nullopt);
    EXPECT_EQ(read().characterCount, 0);
    EXPECT_TRUE(hasLogged(u"[Analyzer] No code replacements file found (neither manually selected nor "
                          "auto-discovered)"_s));
    EXPECT_EQ(access.begun, access.ended);
}

} // namespace ostrelle
