// SPDX-License-Identifier: GPL-3.0-or-later
#pragma once

#include "standins/ModelStandIn.h"

#include <QObject>
#include <QString>
#include <QThread>
#include <QUrl>
#include <chrono>
#include <memory>

#include "ProcessorTime.h"

namespace ostrelle {

/// Runs the stand-in on its own thread, so that its work does not hold up the program's.
class ModelThread {
public:
    /// The only key it accepts.
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
    /// The model's processor time, which a real one would not take from this machine.
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
    QObject m_context; ///< functions invoked on it run on the thread
    std::unique_ptr<ModelStandIn> m_model;
};

} // namespace ostrelle
