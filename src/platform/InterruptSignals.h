// SPDX-License-Identifier: GPL-3.0-or-later
#pragma once

#include <QObject>
#include <QSocketNotifier>

namespace ostrelle {

/// Turns SIGINT, SIGTERM and SIGHUP into an event. Only the first counts: the next has its default effect,
/// except that a further SIGHUP does nothing. Signals ignored when the program started stay ignored. One
/// instance at a time, on the thread of the event loop.
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
