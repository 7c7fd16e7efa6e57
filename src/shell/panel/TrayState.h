// SPDX-License-Identifier: GPL-3.0-or-later
#pragma once

#include "shell/panel/Problems.h"
#include "state/StatusStore.h"

#include <QIcon>
#include <QString>

namespace ostrelle {

/// What the tray's item tells at a glance.
struct TrayState {
    enum class Kind { off, watching, captioning, needsAttention };

    Kind kind = Kind::off;
    QString words = {}; ///< the same in a line

    bool operator==(const TrayState&) const = default;
};

TrayState trayState(bool isAutoModeOn, const StatusStore& status, const QList<Problem>& problems);

/// The program's icon with the mark of the state; pale when auto mode is off.
QIcon trayIcon(TrayState::Kind kind);

} // namespace ostrelle
