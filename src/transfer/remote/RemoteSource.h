// SPDX-License-Identifier: GPL-3.0-or-later
#pragma once

namespace ostrelle {

/// The watcher of the remote server, as auto mode sees it.
class RemoteSource {
public:
    virtual ~RemoteSource() = default;

    /// Starts to poll the server currently in the settings. Calls AutoModeController::restartCountdown()
    /// after each completed poll.
    virtual void start() = 0;
    /// Stops polling, if it is under way.
    virtual void stop() = 0;
};

} // namespace ostrelle
