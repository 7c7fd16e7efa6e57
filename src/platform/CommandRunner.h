// SPDX-License-Identifier: GPL-3.0-or-later
#pragma once

#include <QByteArray>
#include <QCoroTask>
#include <QString>
#include <QStringList>
#include <optional>

namespace ostrelle {

struct CommandResult {
    std::optional<int> status =
        {};                 ///< absent when it could not be started, crashed or was ended by its bound
    QByteArray output = {}; ///< what it wrote on its standard output, the first 64 KiB

    bool isOk() const { return status == 0; }
};

/// Runs programs of the system.
class CommandRunner {
public:
    virtual ~CommandRunner() = default;

    /// Resumes when the command has ended. Each has a bound, after which it is ended. Never throws.
    virtual QCoro::Task<CommandResult> run(QString program, QStringList arguments) = 0;
};

} // namespace ostrelle
