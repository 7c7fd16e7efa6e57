// SPDX-License-Identifier: GPL-3.0-or-later
#pragma once

#include <QObject>

namespace ostrelle {

/// The program's in-process notifications: a signal for each. Whoever has something to announce emits it.
class AppEvents : public QObject {
    Q_OBJECT

Q_SIGNALS:
    void showSettingsWindow();
    /// The manifest of processed files has a new entry.
    void manifestUpdated();
};

} // namespace ostrelle
