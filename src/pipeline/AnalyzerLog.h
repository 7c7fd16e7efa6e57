// SPDX-License-Identifier: GPL-3.0-or-later
#pragma once

#include "platform/Clock.h"
#include "platform/PlainLog.h"

#include <QString>

namespace ostrelle {

/// The pipeline's log: lines on the console, lines in the file Analyzer.log, or both. Nothing here fails
/// towards its caller: a caption must not be lost for a line about it.
class AnalyzerLog {
public:
    /// `folder` is where Analyzer.log lies; it is made when the first line is written.
    AnalyzerLog(QString folder, PlainLog& console, const Clock& clock);

    /// On the console only.
    void print(const QString& message) { m_console.print(message); }
    /// In the file only, with the moment in UTC (ISO 8601) in front.
    void appendToLog(const QString& message);
    /// On the console and in the file.
    void printAndAppend(const QString& message);

    QString path() const;
    PlainLog& console() { return m_console; }

private:
    QString m_folder;
    PlainLog& m_console;
    const Clock& m_clock;
};

} // namespace ostrelle
