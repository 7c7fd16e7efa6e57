// SPDX-License-Identifier: GPL-3.0-or-later
#include "pipeline/AnalyzerLog.h"

#include "core/Error.h"
#include "core/Iso8601.h"
#include "platform/Files.h"

#include <QFile>
#include <algorithm>
#include <utility>

namespace ostrelle {

using namespace Qt::StringLiterals;

AnalyzerLog::AnalyzerLog(QString folder, PlainLog& console, const Clock& clock)
    : m_folder(std::move(folder)), m_console(console), m_clock(clock) {}

QString AnalyzerLog::path() const {
    return m_folder + u"/Analyzer.log"_s;
}

void AnalyzerLog::forget(const QString& path, const QDateTime& before) {
    constexpr qint64 mostBytes = qint64{256} * 1024 * 1024;
    constexpr qsizetype stampLength = 20; // "2026-01-03T19:02:33Z"
    QFile file(path);
    if (!file.open(QIODevice::ReadOnly)) {
        return; // there is none
    }
    const qint64 surplus = file.size() - mostBytes;
    if (surplus > 0) {
        file.seek(surplus);
        file.readLine(); // which is cut
    }
    qint64 start = file.pos();
    for (QByteArray line = file.readLine(); !line.isEmpty(); line = file.readLine()) {
        const auto moment = parseIso8601(QString::fromLatin1(line.first(std::min(line.size(), stampLength))));
        if (moment && *moment >= before) {
            break; // the lines are in the order of time; one without a time belongs to the one before
        }
        start = file.pos();
    }
    if (start > 0) {
        file.seek(start);
        replaceFile(path, file.readAll());
    }
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
