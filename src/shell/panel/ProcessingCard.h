// SPDX-License-Identifier: GPL-3.0-or-later
#pragma once

#include "shell/toolkit/Card.h"
#include "state/SettingsStore.h"

namespace ostrelle {

/// What becomes of images that have a caption already. The switch of auto mode stands in the panel's foot.
class ProcessingCard : public Card {
    Q_OBJECT

public:
    /// The settings have to outlive the card.
    explicit ProcessingCard(SettingsStore& settings, QWidget* parent = nullptr);
};

} // namespace ostrelle
