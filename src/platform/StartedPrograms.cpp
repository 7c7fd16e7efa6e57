// SPDX-License-Identifier: GPL-3.0-or-later
#include "platform/StartedPrograms.h"

#include "core/OffMainThread.h"

#include <unistd.h>

#include <QDirIterator>
#include <QFile>
#include <QFileInfo>
#include <QPointer>
#include <chrono>
#include <utility>

namespace ostrelle {

using namespace Qt::StringLiterals;

namespace {

constexpr std::chrono::seconds period(2);
constexpr qint64 longestName = 256;

QString nameOf(const QString& process) {
    QFile file(process + u"/comm"_s);
    if (!file.open(QIODevice::ReadOnly)) {
        return {}; // it has ended
    }
    const QString name = QString::fromLocal8Bit(file.read(longestName)).trimmed();
    QFile command(process + u"/cmdline"_s);
    if (name.startsWith(u"wine") && command.open(QIODevice::ReadOnly)) {
        return QString::fromLocal8Bit(
            command.read(longestName).split('\0').first()); // it has not told its own yet
    }
    return name;
}

QSet<qint64> processesOf(const QString& folder, const std::function<bool(const QString&)>& isMeant) {
    QSet<qint64> found;
    QDirIterator all(folder, QDir::Dirs | QDir::NoDotAndDotDot);
    while (all.hasNext()) {
        all.next();
        bool isNumber = false;
        const qint64 number = all.fileName().toLongLong(&isNumber);
        if (isNumber && all.fileInfo().ownerId() == ::getuid() && isMeant(nameOf(all.filePath()))) {
            found.insert(number);
        }
    }
    return found;
}

} // namespace

StartedPrograms::StartedPrograms(Clock& clock, std::function<bool(const QString&)> isMeant, QString processes)
    : m_isMeant(std::move(isMeant)), m_processes(std::move(processes)) {
    m_looks.spawn(look());
    m_timer = clock.every(period, [this] {
        if (!m_isLooking) {
            m_looks.spawn(look());
        }
    });
}

QCoro::Task<> StartedPrograms::look() {
    const QPointer<StartedPrograms> self(this);
    m_isLooking = true;
    auto find = [processes = m_processes, isMeant = m_isMeant] { return processesOf(processes, isMeant); };
    const QSet<qint64> running = co_await offMainThread(find);
    if (!self) {
        co_return;
    }
    m_isLooking = false;
    const bool isStart = !m_isFirstLook && !running.isEmpty() && !m_running.intersects(running);
    m_isFirstLook = false;
    m_running = running;
    if (isStart) {
        Q_EMIT started();
    }
}

} // namespace ostrelle
