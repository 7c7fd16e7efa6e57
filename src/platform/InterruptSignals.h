// SPDX-License-Identifier: GPL-3.0-or-later
#pragma once

#include <QObject>
#include <QSocketNotifier>
#include <optional>

namespace ostrelle {

/// SIGINT and SIGTERM as an event. Only the first: the second does to the process what it always does.
class InterruptSignals : public QObject {
    Q_OBJECT

public:
    /// From here on the signals wait. To be made before any other thread is, and that is before the
    /// application object of a desktop program: threads inherit which signals they leave to others. Throws
    /// Error.
    InterruptSignals();
    ~InterruptSignals() override;

    /// Tells of a signal by interrupted(), also of one that has come already. Needs the application object.
    void listen();

Q_SIGNALS:
    void interrupted();

private:
    void take();

    int m_descriptor;
    std::optional<QSocketNotifier> m_notifier;
};

} // namespace ostrelle
