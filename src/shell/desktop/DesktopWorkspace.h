// SPDX-License-Identifier: GPL-3.0-or-later
#pragma once

#include "platform/PlainLog.h"
#include "platform/Workspace.h"

namespace ostrelle {

/// The desktop that the session runs.
class DesktopWorkspace : public Workspace {
public:
    /// The log has to outlive the workspace.
    explicit DesktopWorkspace(PlainLog& log) : m_log(log) {}

    void openLink(const QUrl& link) override;
    void bringToFront() override;

private:
    PlainLog& m_log;
};

} // namespace ostrelle
