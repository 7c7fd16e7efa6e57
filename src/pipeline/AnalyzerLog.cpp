// SPDX-License-Identifier: GPL-3.0-or-later
#include "pipeline/AnalyzerLog.h"

#include "core/Error.h"
#include "core/Iso8601.h"
#include "platform/Files.h"

#include <QFile>
#include <utility>

namespace ostrelle {

using namespace Qt::StringLiterals;

AnalyzerLog::AnalyzerLog(QString folder, PlainLog& console, const Clock& clock)
    : m_folder(std::move(folder)), m_console(console), m_clock(clock) {}

QString AnalyzerLog::path() const {
    return m_folder + u"/Analyzer.log"_s;
}

void AnalyzerLog::appendToLog(const QString& message) {
    QFile file(path());
    if (!file.open(QIODevice::WriteOnly | QIODevice::Append)) {
        try {
            makeFolder(m_folder);
        } catch (const Error&) {
            return; // nowhere to put a log
        }
        file.open(QIODevice::WriteOnly | QIODevice::Append);
    }
    const QByteArray line = (formatIso8601(m_clock.now()) + u' ' + message + u'\n').toUtf8();
    if (!file.isOpen() || file.write(line) != line.size() || !file.flush()) {
        print(u"[Analyzer] Failed to write error log: "_s + file.errorString());
    }
}

void AnalyzerLog::printAndAppend(const QString& message) {
    print(message);
    appendToLog(message);
}

} // namespace ostrelle
