// SPDX-License-Identifier: GPL-3.0-or-later
#pragma once

#include <QtGlobal>

namespace ostrelle {

/// The sum of two counts. An overflow ends the program, as a wrapped count would be stored for good.
inline qint64 sumOf(qint64 a, qint64 b) {
    qint64 sum = 0;
    if (__builtin_add_overflow(a, b, &sum)) {
        qFatal("A count has become too large.");
    }
    return sum;
}

} // namespace ostrelle
