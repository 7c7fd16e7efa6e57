// SPDX-License-Identifier: GPL-3.0-or-later
#pragma once

#include <QSemaphore>
#include <QThreadPool>
#include <QtConcurrentRun>
#include <memory>

namespace ostrelle {

/// Keeps the threads of a folder busy, as a network share does that hangs.
class HangingThreads {
public:
    explicit HangingThreads(QThreadPool* threads) {
        for (int thread = 0; thread < threads->maxThreadCount(); ++thread) {
            m_hanging.append(QtConcurrent::run(threads, [semaphore = m_semaphore] { semaphore->acquire(); }));
        }
    }
    ~HangingThreads() { recover(); }
    HangingThreads(const HangingThreads&) = delete;
    HangingThreads& operator=(const HangingThreads&) = delete;

    void recover() {
        m_semaphore->release(static_cast<int>(m_hanging.size()));
        for (QFuture<void>& hanging : m_hanging) {
            hanging.waitForFinished();
        }
        m_hanging.clear();
    }

private:
    std::shared_ptr<QSemaphore> m_semaphore = std::make_shared<QSemaphore>();
    QList<QFuture<void>> m_hanging;
};

} // namespace ostrelle
