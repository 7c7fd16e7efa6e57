// SPDX-License-Identifier: GPL-3.0-or-later
#pragma once

#include <QString>
#include <QStringView>
#include <optional>
#include <span>

namespace ostrelle {

/// One row of an enumeration's table: the case, the text it is stored and sent as, and its label.
template <typename Enum>
struct RawValueRow {
    Enum value;
    QStringView rawValue;
    QStringView label;
};

/// The rows of an enumeration, in case order. Each enumeration specializes this next to its definition.
template <typename Enum>
std::span<const RawValueRow<Enum>> rawValueRows();

template <typename Enum>
QString rawValue(Enum value) {
    for (const RawValueRow<Enum>& row : rawValueRows<Enum>()) {
        if (row.value == value) {
            return row.rawValue.toString();
        }
    }
    return {};
}

template <typename Enum>
QString label(Enum value) {
    for (const RawValueRow<Enum>& row : rawValueRows<Enum>()) {
        if (row.value == value) {
            return row.label.toString();
        }
    }
    return {};
}

/// The case stored as this text, if there is one. Case and blanks matter.
template <typename Enum>
std::optional<Enum> fromRawValue(QStringView text) {
    for (const RawValueRow<Enum>& row : rawValueRows<Enum>()) {
        if (row.rawValue == text) {
            return row.value;
        }
    }
    return std::nullopt;
}

} // namespace ostrelle
