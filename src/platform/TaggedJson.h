// SPDX-License-Identifier: GPL-3.0-or-later
#pragma once

#include <QJsonValue>
#include <QVariant>

namespace ostrelle {

/// A value as a JSON object whose one member names its type, such as {"integer": 21}, so that it comes back
/// with that type: plain JSON cannot tell 2 from 2.0. The types are those of a DefaultsStore. Undefined for a
/// value of another type or one nested too deep.
QJsonValue taggedValue(const QVariant& value);

/// The reverse; an invalid variant for anything taggedValue() would not produce.
QVariant plainValue(const QJsonValue& tagged);

} // namespace ostrelle
