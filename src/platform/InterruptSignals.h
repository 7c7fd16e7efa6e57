// SPDX-License-Identifier: GPL-3.0-or-later
#pragma once

#include <QObject>
#include <QSocketNotifier>

namespace ostrelle {

/// SIGINT and SIGTERM as an event. Only the first: the next does to the process what it always does. One of
/// its kind at a time, in the thread of the event loop; programs that it starts know nothing of it.
class InterruptSignals : public QObject {
    Q_OBJECT

public:
    /// Needs the application object. Throws Error.
    InterruptSignals();
    ~InterruptSignals() override;

Q_SIGNALS:
    void interrupted();

private:
    void take();

    int m_descriptor;
    QSocketNotifier m_notifier;
};

} // namespace ostrelle
