// SPDX-License-Identifier: GPL-3.0-or-later
#pragma once

#include <QObject>
#include <QString>
#include <QThread>
#include <QUrl>
#include <chrono>
#include <memory>

#include "ProcessorTime.h"
#include "standins/ModelStandIn.h"

namespace ostrelle {

/// The stand-in in a thread of its own, so that what it computes does not hold up the program's.
class ModelThread {
public:
    /// The one key that it takes.
    static QString key() { return QStringLiteral("bench-key"); }

    explicit ModelThread(std::chrono::milliseconds delay) {
        m_context.moveToThread(&m_thread);
        m_thread.start();
        run([this, delay] {
            m_model = std::make_unique<ModelStandIn>(key().toUtf8());
            m_model->setDelay(delay);
            m_model->setKeepsBodies(false);
        });
    }
    ~ModelThread() {
        run([this] { m_model.reset(); });
        m_thread.quit();
        m_thread.wait();
    }
    ModelThread(const ModelThread&) = delete;
    ModelThread& operator=(const ModelThread&) = delete;

    QUrl url() const { return m_model->url(); } // which never changes
    qsizetype requests() {
        qsizetype count = 0;
        run([this, &count] { count = m_model->requests().size(); });
        return count;
    }
    /// The processor time of the model: what a real one would not take from this machine.
    double seconds() {
        double seconds = 0;
        run([&seconds] { seconds = processorSeconds(CLOCK_THREAD_CPUTIME_ID); });
        return seconds;
    }

private:
    template <typename Function>
    void run(Function function) {
        QMetaObject::invokeMethod(&m_context, function, Qt::BlockingQueuedConnection);
    }

    QThread m_thread;
    QObject m_context; ///< whatever it is called with runs in the thread
    std::unique_ptr<ModelStandIn> m_model;
};

} // namespace ostrelle
