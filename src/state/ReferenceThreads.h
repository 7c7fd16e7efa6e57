// SPDX-License-Identifier: GPL-3.0-or-later
#pragma once

#include "core/Attempt.h"
#include "platform/FileReferences.h"

#include <QByteArray>
#include <QDeadlineTimer>
#include <QFuture>
#include <QSemaphore>
#include <QString>
#include <QThreadPool>
#include <memory>
#include <optional>

namespace ostrelle {

/// A reference that is being resolved.
struct ReferenceLook {
    QByteArray reference;
    QFuture<Attempt<ResolvedFile>> answer;
    std::shared_ptr<QSemaphore> isAnswered; ///< released once, for callers that cannot await

    /// Blocks the thread until there is an answer or the deadline passes. Call it once only.
    std::optional<Attempt<ResolvedFile>> answerBy(const QDeadlineTimer& deadline) const;
};

/// Makes and resolves file references on threads of its own: the file may lie on a network share that hangs
/// for hours.
class ReferenceThreads {
public:
    /// The argument must outlive it.
    explicit ReferenceThreads(const FileReferences& references);
    /// Waits a second at most for operations under way. A thread that hangs is left behind.
    ~ReferenceThreads();
    ReferenceThreads(const ReferenceThreads&) = delete;
    ReferenceThreads& operator=(const ReferenceThreads&) = delete;

    QFuture<Attempt<QByteArray>> make(const QString& path);
    ReferenceLook resolve(const QByteArray& reference);
    /// The path in the reference, without reading the disk; nothing if the reference is damaged.
    std::optional<QString> presumedPath(const QByteArray& reference) const;

private:
    const FileReferences& m_references;
    std::unique_ptr<QThreadPool> m_threads;
};

} // namespace ostrelle
