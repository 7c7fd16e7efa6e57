// SPDX-License-Identifier: GPL-3.0-or-later
#include "pipeline/AnalyzerLog.h"

#include "support/RecordingLog.h"
#include "support/Unprivileged.h"
#include "support/VirtualClock.h"

#include <sys/stat.h>

#include <QFile>

namespace ostrelle {

using namespace Qt::StringLiterals;

TEST(AnalyzerLog, TheFirstLineMakesTheFolderAndLaterOnesAreAppended) {
    const QTemporaryDir folder;
    const VirtualClock clock;
    RecordingLog console;
    AnalyzerLog log(folder.filePath(u"a/b"_s), console, clock);
    log.appendToLog(u"[Analyzer] Zoë"_s);
    log.printAndAppend(u"[Analyzer] two"_s);
    QFile file(log.path());
    ASSERT_TRUE(file.open(QIODevice::ReadOnly));
    EXPECT_EQ(file.readAll(),
              "2024-10-26T12:00:00Z [Analyzer] Zo\xC3\xAB\n2024-10-26T12:00:00Z [Analyzer] two\n");
    EXPECT_EQ(console.lines, QStringList(u"[Analyzer] two"_s));
}

TEST(AnalyzerLog, AFolderThatCannotBeWrittenCostsALineOnTheConsoleForEachMessage) {
    const UnprivilegedFolder folder;
    ASSERT_EQ(::chmod(folder.path().toLocal8Bit().constData(), 0555), 0);
    const VirtualClock clock;
    RecordingLog console;
    AnalyzerLog(folder.filePath(u"new"_s), console, clock).appendToLog(u"no place for it"_s);
    EXPECT_TRUE(console.lines.isEmpty());
    AnalyzerLog log(folder.path(), console, clock);
    log.appendToLog(u"one"_s);
    log.appendToLog(u"two"_s);
    EXPECT_EQ(console.lines.filter(u"[Analyzer] Failed to write error log: "_s).size(), 2);
    ASSERT_EQ(::chmod(folder.path().toLocal8Bit().constData(), 0755), 0);
}

} // namespace ostrelle
