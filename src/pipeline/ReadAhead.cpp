// SPDX-License-Identifier: GPL-3.0-or-later
#include "pipeline/ReadAhead.h"

#include "pipeline/CaptionAcceptance.h"

#include <QCoroFuture>
#include <QFileInfo>
#include <QtConcurrentRun>
#include <algorithm>
#include <optional>
#include <utility>

namespace ostrelle {

namespace {

bool hasRealCaption(const OpenedImage& opened) {
    return opened.metadata && isRealCaption(opened.metadata->reading.facts.caption.value_or(QString()));
}

std::shared_ptr<const OpenedImage> readAhead(const QString& file, const QTimeZone& zone,
                                             bool skipsCaptioned) {
    auto ahead = std::make_shared<OpenedImage>(openImage(file, zone, {.makesSidecar = false}));
    if (!skipsCaptioned || !hasRealCaption(*ahead)) {
        const auto picture = attemptNow([&ahead] { return seePicture(*ahead->image); });
        ahead->picture = picture ? std::optional(*picture) : std::nullopt;
    }
    ahead->image.reset(); // many images wait for their turn
    return ahead;
}

} // namespace

ReadAhead::ReadAhead(FolderThreads& threads, QStringList files, QTimeZone zone, bool skipsCaptioned)
    : m_threads(threads)
    , m_files(std::move(files))
    , m_zone(std::move(zone))
    , m_skipsCaptioned(skipsCaptioned) {
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
        auto read = [file, zone = m_zone, skips = m_skipsCaptioned, isOver = m_isOver] {
            return *isOver ? nullptr : readAhead(file, zone, skips);
        };
        m_ahead.insert(m_next, QtConcurrent::run(m_threads.renderersOf(QFileInfo(file).path()), read));
    }
}

} // namespace ostrelle
