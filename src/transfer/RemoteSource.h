// SPDX-License-Identifier: GPL-3.0-or-later
#pragma once

namespace ostrelle {

/// The watcher of the remote server, as auto mode sees it.
class RemoteSource {
public:
    virtual ~RemoteSource() = default;

    /// Begins to poll the server that the settings name at this moment. Tells the controller of each
    /// completed poll by AutoModeController::restartCountdown().
    virtual void start() = 0;
    /// Ends the polling; nothing happens when there is none.
    virtual void stop() = 0;
};

} // namespace ostrelle
