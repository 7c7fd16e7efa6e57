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

/// Reads a run's next images and makes their renditions while the run is busy with those before them, on the
/// threads that decode pictures. Writes nothing. What is wrong with an image is left to its own turn.
class ReadAhead {
public:
    /// So many images are ready or under way: those of the next batch, and the one after that.
    static constexpr qsizetype depth = 20;

    /// Begins with the first images. With `skipsCaptioned`, one that has a real caption gets no rendition.
    /// The threads have to outlive what is under way.
    ReadAhead(FolderThreads& threads, QStringList files, QTimeZone zone, bool skipsCaptioned);
    ~ReadAhead();
    ReadAhead(const ReadAhead&) = delete;
    ReadAhead& operator=(const ReadAhead&) = delete;

    /// What was read of the image of that place among the files, once; null when nothing was. Waits for it if
    /// it is under way. Images are taken in their order, but some may be passed over.
    QCoro::Task<std::shared_ptr<const ImageAhead>> take(qsizetype index);

    /// Begins nothing more, and resumes when nothing is under way. The object need not live that long.
    QCoro::Task<> stop();

private:
    using Ahead = std::shared_ptr<const ImageAhead>;

    void readUpTo(qsizetype end);
    static QCoro::Task<> awaitAll(QList<QFuture<Ahead>> reads);

    FolderThreads& m_threads;
    QStringList m_files;
    QTimeZone m_zone;
    bool m_skipsCaptioned;
    qsizetype m_next = 0; ///< the first that nobody has begun to read
    QHash<qsizetype, QFuture<Ahead>> m_ahead;
    std::shared_ptr<std::atomic_bool> m_isOver = std::make_shared<std::atomic_bool>(false);
};

} // namespace ostrelle
