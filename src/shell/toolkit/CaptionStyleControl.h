// SPDX-License-Identifier: GPL-3.0-or-later
#pragma once

#include "shell/toolkit/SegmentedControl.h"
#include "state/SettingsStore.h"

namespace ostrelle {

/// The choice of the caption style, in step with the settings.
class CaptionStyleControl : public SegmentedControl {
    Q_OBJECT

public:
    /// The settings must outlive the control.
    CaptionStyleControl(SettingsStore& settings, const QString& objectName, QWidget* parent = nullptr);
};

} // namespace ostrelle
