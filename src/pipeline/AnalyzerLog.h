// SPDX-License-Identifier: GPL-3.0-or-later
#pragma once

#include "platform/Clock.h"
#include "platform/PlainLog.h"

#include <QDateTime>
#include <QString>

namespace ostrelle {

/// The pipeline's log: lines on the console, lines in the file Analyzer.log, or both. Nothing but forget()
/// throws: a caption must not be lost for a line about it.
class AnalyzerLog {
public:
    /// `folder` holds Analyzer.log and is made when the first line is written. The references must outlive
    /// the log.
    AnalyzerLog(QString folder, PlainLog& console, const Clock& clock);

    /// On the console only.
    void print(const QString& message) { m_console.print(message); }
    /// In the file only, as UTF-8, after the time in UTC (ISO 8601).
    void appendToLog(const QString& message);
    /// On the console and in the file.
    void printAndAppend(const QString& message);

    QString path() const;
    /// Removes the lines from before that time, and all but the last 256 MiB. A line that another program
    /// appends at that very moment may be lost. For worker threads. Throws FileError.
    static void forget(const QString& path, const QDateTime& before);
    PlainLog& console() { return m_console; }

private:
    QString m_folder;
    PlainLog& m_console;
    const Clock& m_clock;
};

} // namespace ostrelle
