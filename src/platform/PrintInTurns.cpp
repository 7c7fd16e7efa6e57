// SPDX-License-Identifier: GPL-3.0-or-later
#include "platform/PrintInTurns.h"

#include "core/LoopTurn.h"

#include <algorithm>

namespace ostrelle {

QCoro::Task<> printInTurns(PlainLog& log, QStringList lines) {
    constexpr qsizetype atOnce = 100;
    LoopTurn turn;
    for (qsizetype begin = 0; begin < lines.size(); begin += atOnce) {
        log.printAll(lines.sliced(begin, std::min(atOnce, lines.size() - begin)));
        if (turn.isLong()) {
            co_await turn.giveWay();
        }
    }
}

} // namespace ostrelle
