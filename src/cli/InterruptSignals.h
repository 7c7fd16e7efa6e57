// SPDX-License-Identifier: GPL-3.0-or-later
#pragma once

#include <QObject>
#include <QSocketNotifier>

namespace ostrelle {

/// SIGINT and SIGTERM as an event. Only the first: the second does to the process what it always does. To be
/// made before any other thread is, as threads inherit which signals they leave to it.
class InterruptSignals : public QObject {
    Q_OBJECT

public:
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
