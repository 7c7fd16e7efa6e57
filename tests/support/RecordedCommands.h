// SPDX-License-Identifier: GPL-3.0-or-later
#pragma once

#include "platform/CommandRunner.h"

#include <QHash>
#include <QString>
#include <QStringList>

namespace ostrelle {

/// Runs nothing: keeps each command as a line, and answers with the status that the test has set for its
/// beginning.
class RecordedCommands : public CommandRunner {
public:
    QCoro::Task<CommandResult> run(QString program, QStringList arguments) override {
        const QString line = (QStringList(program) + arguments).join(u' ');
        lines.append(line);
        for (auto set = statuses.begin(); set != statuses.end(); ++set) {
            if (line.contains(set.key())) {
                co_return CommandResult{.status = *set};
            }
        }
        co_return CommandResult{.status = 0};
    }

    QStringList lines;
    QHash<QString, int> statuses; ///< by a part of the line; 0 if not set
};

} // namespace ostrelle
