// SPDX-License-Identifier: GPL-3.0-or-later
#pragma once

#include <QtGlobal>
#include <type_traits>

namespace ostrelle {

/// Sets a published field of the owner and emits its signal, if the value is a new one.
template <typename Owner, typename T>
void publish(Owner* owner, T& field, const std::type_identity_t<T>& value, void (Owner::*changed)()) {
    if (field == value) {
        return;
    }
    field = value;
    Q_EMIT(owner->*changed)();
}

} // namespace ostrelle
