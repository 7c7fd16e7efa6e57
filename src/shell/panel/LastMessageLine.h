// SPDX-License-Identifier: GPL-3.0-or-later
#pragma once

#include "shell/toolkit/ElidedLabel.h"
#include "state/StatusStore.h"

namespace ostrelle {

/// The result of the last run, in small grey words; hidden when there is none.
class LastMessageLine : public ElidedLabel {
    Q_OBJECT

public:
    /// The store must outlive the line.
    explicit LastMessageLine(const StatusStore& status, QWidget* parent = nullptr);

private:
    void showMessage();

    const StatusStore& m_status;
};

} // namespace ostrelle
