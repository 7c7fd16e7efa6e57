// SPDX-License-Identifier: GPL-3.0-or-later
#pragma once

#include "platform/Alerts.h"
#include "platform/FileChooser.h"
#include "state/SettingsStore.h"

#include <QString>
#include <QStringList>
#include <optional>

namespace ostrelle {

/// The files that the user chose, by kind. Files of other kinds are left out.
struct ManualSelection {
    QStringList images;   ///< each once, in the order chosen
    QStringList sidecars; ///< of RAW images

    static ManualSelection of(const QStringList& files);

    QStringList rawImages() const;
    /// Whether the chosen sidecars include one for each RAW image, by name. A sidecar that was not chosen
    /// does not count, even if it exists: choosing it grants the access.
    bool hasAllSidecars() const;
};

/// True for the extension of a RAW image that can be chosen.
bool isSelectableRaw(const QString& file);

/// The folder of the current source, where the file chooser starts.
std::optional<QString> workingFolder(const SettingsStore& settings);

/// The question of the file chooser for images.
FileQuestion imageQuestion(const SettingsStore& settings);

/// The log line for that question; nothing without a folder.
std::optional<QString> imageQuestionLogLine(const SettingsStore& settings);

/// The alerts for a selection that cannot be captioned; nothing if there is no reason to show one.
std::optional<Alert> missingSidecarsAlert(const ManualSelection& selection);
std::optional<Alert> missingImagesAlert(const ManualSelection& selection);

} // namespace ostrelle
