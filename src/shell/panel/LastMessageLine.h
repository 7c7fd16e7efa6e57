// SPDX-License-Identifier: GPL-3.0-or-later
#pragma once

#include "shell/toolkit/ElidedLabel.h"
#include "state/StatusStore.h"

namespace ostrelle {

/// What the last run came to, in small grey words; away while there is nothing to tell.
class LastMessageLine : public ElidedLabel {
    Q_OBJECT

public:
    /// The store has to outlive the line.
    explicit LastMessageLine(const StatusStore& status, QWidget* parent = nullptr);

private:
    void showMessage();

    const StatusStore& m_status;
};

} // namespace ostrelle
