// SPDX-License-Identifier: GPL-3.0-or-later
#include "platform/PrintInTurns.h"

#include "core/LoopTurn.h"

#include <utility>

namespace ostrelle {

QCoro::Task<> printInTurns(PlainLog& log, QStringList lines) {
    LoopTurn turn;
    for (const QString& line : std::as_const(lines)) {
        log.print(line);
        if (turn.isLong()) {
            co_await turn.giveWay();
        }
    }
}

} // namespace ostrelle
