// SPDX-License-Identifier: GPL-3.0-or-later
#pragma once

#include "shell/toolkit/Card.h"
#include "state/SettingsStore.h"

namespace ostrelle {

/// What to do with images that already have a caption. The switch of auto mode is in the panel's foot.
class ProcessingCard : public Card {
    Q_OBJECT

public:
    /// The settings must outlive the card.
    explicit ProcessingCard(SettingsStore& settings, QWidget* parent = nullptr);
};

} // namespace ostrelle
