// SPDX-License-Identifier: GPL-3.0-or-later
#include "state/ReferenceThreads.h"

#include "core/Error.h"

#include <QtConcurrentRun>
#include <exception>

namespace ostrelle {

namespace {

/// What the function returns or throws.
template <typename Function>
auto attempted(Function function) {
    using Outcome = Attempt<decltype(function())>;
    try {
        return Outcome::success(function());
    } catch (...) {
        return Outcome::failed(std::current_exception());
    }
}

} // namespace

std::optional<Attempt<ResolvedFile>> ReferenceLook::answerBy(const QDeadlineTimer& deadline) const {
    const auto patience = static_cast<int>(deadline.remainingTime());
    return isAnswered->tryAcquire(1, patience) ? std::optional(answer.result()) : std::nullopt;
}

ReferenceThreads::ReferenceThreads(const FileReferences& references)
    : m_references(references), m_threads(std::make_unique<QThreadPool>()) {
    constexpr int atOnce = 6; // three that hang leave three
    m_threads->setMaxThreadCount(atOnce);
}

ReferenceThreads::~ReferenceThreads() {
    constexpr int patience = 1000; // milliseconds
    if (!m_threads->waitForDone(patience)) {
        static_cast<void>(m_threads.release());
    }
}

QFuture<Attempt<QByteArray>> ReferenceThreads::make(const QString& path) {
    return QtConcurrent::run(m_threads.get(), [&references = m_references, path] {
        return attempted([&] { return references.make(path); });
    });
}

ReferenceLook ReferenceThreads::resolve(const QByteArray& reference) {
    const auto isAnswered = std::make_shared<QSemaphore>();
    const auto answer =
        QtConcurrent::run(m_threads.get(), [&references = m_references, reference, isAnswered] {
            const auto outcome = attempted([&] { return references.resolve(reference); });
            isAnswered->release();
            return outcome;
        });
    return {.reference = reference, .answer = answer, .isAnswered = isAnswered};
}

std::optional<QString> ReferenceThreads::presumedPath(const QByteArray& reference) const {
    try {
        return m_references.pathOf(reference);
    } catch (const Error&) {
        return std::nullopt;
    }
}

} // namespace ostrelle
