// SPDX-License-Identifier: GPL-3.0-or-later
#pragma once

#include <QJsonValue>
#include <QVariant>

namespace ostrelle {

/// A value as a JSON object of one member that names its type, such as {"integer": 21}, so that it comes back
/// as what it was: JSON alone knows no difference between 2 and 2.0. The types are those of a DefaultsStore.
/// Undefined when the value is of another type or nested too deep.
QJsonValue taggedValue(const QVariant& value);

/// The reverse; an invalid variant for anything that taggedValue() does not make.
QVariant plainValue(const QJsonValue& tagged);

} // namespace ostrelle
