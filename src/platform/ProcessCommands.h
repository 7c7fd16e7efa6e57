// SPDX-License-Identifier: GPL-3.0-or-later
#pragma once

#include "platform/CommandRunner.h"

#include <chrono>

namespace ostrelle {

/// Commands as processes without standard input. Nothing waits for one but its caller.
class ProcessCommands : public CommandRunner {
public:
    explicit ProcessCommands(std::chrono::milliseconds bound = std::chrono::seconds(10)) : m_bound(bound) {}

    QCoro::Task<CommandResult> run(QString program, QStringList arguments) override;

private:
    std::chrono::milliseconds m_bound;
};

} // namespace ostrelle
