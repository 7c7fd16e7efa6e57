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

} // namespace ostrelle
