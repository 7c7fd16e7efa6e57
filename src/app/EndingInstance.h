// SPDX-License-Identifier: GPL-3.0-or-later
#pragma once

#include "app/SingleInstance.h"
#include "platform/Clock.h"

#include <chrono>

namespace ostrelle {

/// The wait of a start for an earlier one that is about to end, which finishes its last images without any
/// window. The user is told, and may call the start off.
class EndingInstance {
public:
    static constexpr std::chrono::minutes patience{5};

    /// Both have to outlive this.
    EndingInstance(SingleInstance& instance, Clock& clock) : m_instance(instance), m_clock(clock) {}

    /// Claims until it is settled who runs. `early` when the user does not want to wait any longer, or has
    /// been told that the other did not end within the patience.
    SingleInstance::Standing wait();

private:
    SingleInstance& m_instance;
    Clock& m_clock;
};

} // namespace ostrelle
