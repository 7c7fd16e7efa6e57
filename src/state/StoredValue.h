// SPDX-License-Identifier: GPL-3.0-or-later
#pragma once

#include "core/RawValue.h"
#include "platform/DefaultsStore.h"

#include <QString>
#include <QVariant>
#include <type_traits>

namespace ostrelle {

/// The value as it is stored: an enumerator by its raw value, anything else as it is.
template <typename T>
QVariant toStored(const T& value) {
    if constexpr (std::is_enum_v<T>) {
        return rawValue(value);
    } else {
        return value;
    }
}

/// The value stored under the key. One of another type or an unknown raw value counts as absent, and stays
/// in the store.
template <typename T>
T loadStored(const DefaultsStore& defaults, const QString& key, const T& absent) {
    if constexpr (std::is_enum_v<T>) {
        return fromRawValue<T>(defaults.get<QString>(key).value_or(QString())).value_or(absent);
    } else {
        return defaults.get<T>(key).value_or(absent);
    }
}

} // namespace ostrelle
