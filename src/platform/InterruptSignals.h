// SPDX-License-Identifier: GPL-3.0-or-later
#pragma once

#include <QObject>
#include <QSocketNotifier>

namespace ostrelle {

/// SIGINT, SIGTERM and SIGHUP as an event. Only the first: the next does to the process what it always does,
/// but a further SIGHUP does nothing. Signals that were ignored when the program started stay so. One of its
/// kind at a time, in the thread of the event loop.
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
    void stopListening(void (*nextHangUp)(int));

    int m_descriptor;
    QSocketNotifier m_notifier;
};

} // namespace ostrelle
