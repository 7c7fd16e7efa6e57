// SPDX-License-Identifier: GPL-3.0-or-later
#include "pipeline/CodeReplacements.h"

#include "core/Text.h"
#include "pipeline/CodeReplacementsReading.h"
#include "pipeline/PipelineFixture.h"

namespace ostrelle {

using namespace Qt::StringLiterals;

TEST_F(PipelineTest, ARosterWhoseNamesAreOfNoUseSaysWhy) {
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
        EXPECT_EQ(rosterState(write(u"roster.txt"_s, row.bytes)).problem, row.problem);
    }
    EXPECT_EQ(rosterState(path(u"gone.txt"_s)).problem,
              u"The names in gone.txt will not be used: it cannot be read (No such file or directory)."_s);
}

TEST(CodeReplacements, CountsLinesAndKeys) {
    const struct {
        QByteArray bytes;
        QString summary; ///< lines, characters, keys; then sample keys
    } rows[] = {
        {"", u"0 0 0;"_s},
        {"12\tJohn Smith", u"1 13 1; 12"_s},
        {"\xEF\xBB\xBF" // a byte-order mark
         "12\tA\r\n\r\n13\tB\r\n",
         u"2 11 2; 12 13"_s},
        {"a comment\n\tno key\n \t \n", u"3 22 0;"_s},
        {" 44 \tA\n44\tB\tC\n", u"2 14 1; 44"_s},
        {"1\t\v2\t\f3\t\r4\t\xC2\x85 5\t\xE2\x80\xA8 6\t\xE2\x80\xA9 7\t\n8\t", u"8 26 8; 1 2 3 4 5 6"_s},
        {"7\te\xCC\x81\xF0\x9F\x91\x8D\xF0\x9F\x8F\xBD\n", u"1 5 1; 7"_s}, // é and a thumb with a skin tone
        {"J\xF8rgen\tX", u"0 0 0;"_s},                                     // Latin-1
        {QByteArray("\xFF\xFE\61\0\t\0", 6), u"0 0 0;"_s},                 // UTF-16
        {"12\tJohn \xE2\x80", u"0 0 0;"_s},                                // cut short
    };
    for (const auto& row : rows) {
        const CodeReplacements roster = parseCodeReplacements(row.bytes);
        const QString counts =
            u"%1 %2 %3;"_s.arg(roster.lineCount).arg(roster.characterCount).arg(roster.uniqueKeyCount);
        EXPECT_EQ((QStringList{counts} + roster.sampleKeys).join(u' '), row.summary)
            << row.bytes.toStdString();
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

TEST_F(PipelineTest, ARosterIsDiscoveredUnderThreeNames) {
    const QString other = folderWith(u"other"_s);
    folderWith(u"deeper"_s);
    write(u"deeper/code-replacements.txt"_s, "");
    EXPECT_EQ(findCodeReplacementsFile(folder.path()), std::nullopt);
    EXPECT_FALSE(hasCodeReplacementsFile(std::nullopt, folder.path()));
    EXPECT_TRUE(hasCodeReplacementsFile(path(u"gone.txt"_s), folder.path())) << "it was selected";
    // From the last preference to the first.
    for (const QString& name :
         {u"codereplacements.txt"_s, u"code_replacements.txt"_s, u"code-replacements.txt"_s}) {
        write(name, "");
        EXPECT_EQ(findCodeReplacementsFile(folder.path()), path(name));
        EXPECT_TRUE(hasCodeReplacementsFile(std::nullopt, folder.path()));
    }
    EXPECT_FALSE(hasCodeReplacementsFile(std::nullopt, other));
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
    EXPECT_TRUE(
        hasLogged(u"[Analyzer] Using manually selected code replacements file: "_s + path(u"roster.txt"_s)));
    settings.setCodeReplacementsFile(std::nullopt);
    EXPECT_EQ(read().sampleKeys, QStringList{u"9"_s});
    EXPECT_TRUE(hasLogged(u"[Analyzer] Using auto-discovered code replacements file: "_s + discovered));
    EXPECT_EQ(access.all.size(), 2);
    EXPECT_EQ(access.held, QStringList());
    EXPECT_EQ(console.lines.filter(u"[Analyzer]"_s), QStringList());
}

TEST_F(RosterTest, IsEmptyWhenThereIsNoneOrItCannotBeRead) {
    write(u"roster.txt"_s, "J\xF8rgen\tX");
    EXPECT_EQ(read().characterCount, 0);
    EXPECT_EQ(logFile().size(), 1) << "bytes that are not text are not logged";
    settings.setCodeReplacementsFile(path(u"gone.txt"_s));
    EXPECT_EQ(read().characterCount, 0);
    const QStringList told = console.lines.filter(u"[Analyzer]"_s);
    ASSERT_EQ(told.size(), 1);
    EXPECT_TRUE(told.first().startsWith(u"[Analyzer] Failed to read Code Replacements file: "_s));
    EXPECT_TRUE(hasLogged(told.first()));
    settings.setCodeReplacementsFile(std::nullopt);
    EXPECT_EQ(read().characterCount, 0);
    EXPECT_TRUE(hasLogged(u"[Analyzer] No code replacements file found (neither manually selected nor "
                          "auto-discovered)"_s));
    EXPECT_EQ(access.held, QStringList());
}

} // namespace ostrelle
