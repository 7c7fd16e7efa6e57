// SPDX-License-Identifier: GPL-3.0-or-later
#pragma once

#include "platform/ShutdownDelay.h"
#include "state/StatusStore.h"

#include <QObject>

namespace ostrelle {

/// Tells when the user logs out or the machine shuts down. Nobody is there to ask then, so windows are not
/// closed one by one. A shutdown waits for the images under way as long as the machine grants.
class SessionEnd : public QObject {
    Q_OBJECT

public:
    /// Needs the application object. `status` must outlive this.
    explicit SessionEnd(StatusStore& status);

    bool eventFilter(QObject* watched, QEvent* event) override;

Q_SIGNALS:
    void ending();

private:
    ShutdownDelay m_shutdown;
};

} // namespace ostrelle
