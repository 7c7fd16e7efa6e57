// SPDX-License-Identifier: GPL-3.0-or-later
#include "pipeline/AnalyzerLog.h"

#include "pipeline/PipelineFixture.h"

namespace ostrelle {

using namespace Qt::StringLiterals;

TEST_F(PipelineTest, TheFirstLineOfALogMakesTheFolderAndLaterOnesAreAppended) {
    AnalyzerLog itsLog(path(u"a/b"_s), console, clock);
    itsLog.appendToLog(u"[Analyzer] Zoë"_s);
    itsLog.printAndAppend(u"[Analyzer] two"_s);
    EXPECT_EQ(contentsOf(itsLog.path()),
              "2024-10-26T12:00:00Z [Analyzer] Zo\xC3\xAB\n2024-10-26T12:00:00Z [Analyzer] two\n");
    EXPECT_EQ(console.lines.filter(u"[Analyzer]"_s), QStringList(u"[Analyzer] two"_s));
}

TEST_F(PipelineTest, ALogFolderThatCannotBeWrittenCostsALineOnTheConsoleForEachMessage) {
    const QString locked = folderWith(u"locked"_s);
    setMode(locked, 0555);
    AnalyzerLog(locked + u"/new"_s, console, clock).appendToLog(u"no place for it"_s);
    EXPECT_EQ(console.count(u"[Analyzer]"_s), 0);
    AnalyzerLog itsLog(locked, console, clock);
    itsLog.appendToLog(u"one"_s);
    itsLog.appendToLog(u"two"_s);
    EXPECT_EQ(console.count(u"[Analyzer] Failed to write error log: "_s), 2);
    setMode(locked, 0755);
}

TEST(AnalyzerLog, LinesFromBeforeATimeAreForgottenWithWhatBelongsToThem) {
    const QTemporaryDir folder;
    const QString path = folder.filePath(QStringLiteral("Analyzer.log"));
    const QByteArray kept = "2026-01-03T00:00:00Z new\nof it\n2026-01-02T23:00:00Z clock set back\n";
    const struct {
        const char* name;
        QByteArray before;
        QByteArray after;
    } rows[] = {{"old and new", "2026-01-02T23:59:59Z old\nits second line\n" + kept, kept},
                {"only new", kept, kept},
                {"only old", "2026-01-01T00:00:00Z old\nwithout an end", ""},
                {"empty", "", ""}};
    for (const auto& row : rows) {
        SCOPED_TRACE(row.name);
        writeFile(path, row.before);
        AnalyzerLog::forget(path, QDateTime(QDate(2026, 1, 3), QTime(0, 0), QTimeZone::utc()));
        EXPECT_EQ(contentsOf(path), row.after);
    }
    AnalyzerLog::forget(folder.filePath(QStringLiteral("none.log")), QDateTime::currentDateTimeUtc());
}

} // namespace ostrelle
