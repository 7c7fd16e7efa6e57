// SPDX-License-Identifier: GPL-3.0-or-later
#include "pipeline/ReadAhead.h"

#include <QCoroFuture>
#include <QFileInfo>
#include <QtConcurrentRun>
#include <algorithm>
#include <utility>

namespace ostrelle {

ReadAhead::ReadAhead(FolderThreads& threads, QStringList files, QTimeZone zone, bool keepsCaptions)
    : m_threads(threads), m_files(std::move(files)), m_zone(std::move(zone)), m_keepsCaptions(keepsCaptions) {
    readUpTo(depth);
}

ReadAhead::~ReadAhead() {
    *m_isOver = true;
}

QCoro::Task<> ReadAhead::stop() {
    *m_isOver = true;
    return awaitAll(m_ahead.values());
}

QCoro::Task<> ReadAhead::awaitAll(QList<QFuture<Ahead>> reads) {
    for (QFuture<Ahead>& read : reads) {
        co_await read;
    }
}

QCoro::Task<std::shared_ptr<const OpenedImage>> ReadAhead::take(qsizetype index) {
    // Images that another program captions are passed over: nobody will ask for them.
    m_next = std::max(m_next, index);
    m_ahead.removeIf([index](const auto& entry) { return entry.key() < index; });
    readUpTo(index + depth);
    QFuture<Ahead> ahead = m_ahead.take(index);
    if (!ahead.isValid()) {
        co_return Ahead();
    }
    const Ahead read = co_await ahead;
    co_return read;
}

void ReadAhead::readUpTo(qsizetype end) {
    for (; m_next < std::min(end, m_files.size()); ++m_next) {
        const QString& file = m_files.at(m_next);
        auto read = [file, zone = m_zone, keepsCaptions = m_keepsCaptions, isOver = m_isOver]() -> Ahead {
            const Opening opening{.makesSidecar = false, .keepsCaptions = keepsCaptions};
            return *isOver ? nullptr : std::make_shared<OpenedImage>(openImage(file, zone, opening));
        };
        m_ahead.insert(m_next, QtConcurrent::run(m_threads.renderersOf(QFileInfo(file).path()), read));
    }
}

} // namespace ostrelle
