// SPDX-License-Identifier: GPL-3.0-or-later
#pragma once

#include "core/SourceType.h"
#include "state/StatusStore.h"

#include <QList>
#include <QString>
#include <optional>

namespace ostrelle {

/// One row of the main panel's progress.
struct ProgressRow {
    enum class Style { heading, normal, small };

    QString text = {};  ///< empty: only the bar is shown
    QString count = {}; ///< beside the text, such as "3/21"
    Style style = Style::normal;
    bool isElided = false;               ///< shortened in the middle if too long
    std::optional<double> fraction = {}; ///< of the bar, from 0 to 1; none: no bar

    bool operator==(const ProgressRow&) const = default;
};

/// The main panel's rows about the run or the transfer, or how the last transfer ended.
QList<ProgressRow> progressRows(SourceType source, const StatusStore& status);

/// Whether there is something to stop or pause: images being captioned, or waiting for that.
bool hasWork(const StatusStore& status);

/// The last message. Nothing during a run, whose rows show it, or when it only says that auto mode is off.
std::optional<QString> lastMessageLine(const StatusStore& status);

/// The line about auto mode; nothing when it is off.
std::optional<QString> autoModeLine(bool isOn, const StatusStore& status);

} // namespace ostrelle
