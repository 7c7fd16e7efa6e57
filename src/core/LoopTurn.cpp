// SPDX-License-Identifier: GPL-3.0-or-later
#include "core/LoopTurn.h"

#include <QMetaObject>
#include <QObject>

namespace ostrelle {

QCoro::Task<> LoopTurn::giveWay() {
    const Event resumed;
    QObject context;
    QMetaObject::invokeMethod(&context, [resumed] { resumed.happen(); }, Qt::QueuedConnection);
    co_await resumed.happened();
    restart();
}

} // namespace ostrelle
