// SPDX-License-Identifier: GPL-3.0-or-later
#pragma once

#include "pipeline/OpenedImage.h"
#include "platform/FolderThreads.h"

#include <QCoroTask>
#include <QFuture>
#include <QHash>
#include <QList>
#include <QString>
#include <QStringList>
#include <QTimeZone>
#include <atomic>
#include <memory>

namespace ostrelle {

/// Reads a run's next images and renders them while the run is busy with earlier ones, on the threads that
/// decode pictures. Writes nothing. Failures are left to the image's own turn.
class ReadAhead {
public:
    /// How many images are read from the one being taken on: two batches of them.
    static constexpr qsizetype depth = 20;

    /// Starts with the first images. With `skipsCaptioned`, images that have a real caption are not rendered.
    /// The threads must outlive the reading under way, which may go on after this object.
    ReadAhead(FolderThreads& threads, QStringList files, QTimeZone zone, bool skipsCaptioned);
    ~ReadAhead();
    ReadAhead(const ReadAhead&) = delete;
    ReadAhead& operator=(const ReadAhead&) = delete;

    /// Returns what was read of the image at that index of the files, waiting for it if need be, and starts
    /// to read further ones. Null for an image that was taken before. Take images in order; some may be left
    /// out.
    QCoro::Task<std::shared_ptr<const OpenedImage>> take(qsizetype index);

    /// Begins nothing more, and resumes when nothing is under way. The object need not live that long.
    QCoro::Task<> stop();

private:
    using Ahead = std::shared_ptr<const OpenedImage>;

    void readUpTo(qsizetype end);
    static QCoro::Task<> awaitAll(QList<QFuture<Ahead>> reads);

    FolderThreads& m_threads;
    QStringList m_files;
    QTimeZone m_zone;
    bool m_skipsCaptioned;
    qsizetype m_next = 0; ///< the first image whose reading has not started
    QHash<qsizetype, QFuture<Ahead>> m_ahead;
    std::shared_ptr<std::atomic_bool> m_isOver = std::make_shared<std::atomic_bool>(false);
};

} // namespace ostrelle
