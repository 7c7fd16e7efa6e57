// SPDX-License-Identifier: GPL-3.0-or-later
#pragma once

#include "app/SingleInstance.h"
#include "platform/Clock.h"

#include <chrono>

namespace ostrelle {

/// Makes a new start wait for an earlier instance that is about to end and is finishing its last images
/// without a window. Tells the user, who may cancel the start.
class EndingInstance {
public:
    static constexpr std::chrono::minutes patience{5};

    /// Both must outlive this.
    EndingInstance(SingleInstance& instance, Clock& clock) : m_instance(instance), m_clock(clock) {}

    /// Claims until it is decided which instance runs. `early` when the user stops waiting, or has been told
    /// that the other instance did not end in time.
    SingleInstance::Standing wait();

private:
    SingleInstance& m_instance;
    Clock& m_clock;
};

} // namespace ostrelle
