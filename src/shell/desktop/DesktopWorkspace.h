// SPDX-License-Identifier: GPL-3.0-or-later
#pragma once

#include "platform/PlainLog.h"
#include "platform/Workspace.h"

namespace ostrelle {

/// The desktop of the session.
class DesktopWorkspace : public Workspace {
public:
    /// The log must outlive the workspace.
    explicit DesktopWorkspace(PlainLog& log) : m_log(log) {}

    void openLink(const QUrl& link) override;
    void bringToFront() override;

private:
    PlainLog& m_log;
};

} // namespace ostrelle
