// SPDX-License-Identifier: GPL-3.0-or-later
#pragma once

#include "platform/Alerts.h"
#include "platform/FileChooser.h"
#include "state/SettingsStore.h"

#include <QString>
#include <QStringList>
#include <optional>

namespace ostrelle {

/// The files that the user chose, sorted into what they are. Files of other kinds are left out.
struct ManualSelection {
    QStringList images;   ///< each once, in the order in which they were chosen
    QStringList sidecars; ///< of RAW images

    static ManualSelection of(const QStringList& files);

    QStringList rawImages() const;
    /// Whether the chosen sidecars include one for each RAW image, by its name. A sidecar that only lies
    /// beside its image does not count: the user's choice grants the access to it.
    bool hasAllSidecars() const;
};

/// True for a RAW image of a kind that can be chosen.
bool isSelectableRaw(const QString& file);

/// The folder that the source of the images works in, where the choice of images begins.
std::optional<QString> workingFolder(const SettingsStore& settings);

/// What the user is asked when choosing images.
FileQuestion imageQuestion(const SettingsStore& settings);

/// What the log says when that is asked; nothing without a folder.
std::optional<QString> imageQuestionLogLine(const SettingsStore& settings);

/// What the user is told about a selection that is not captioned; nothing about one that is.
std::optional<Alert> missingSidecarsAlert(const ManualSelection& selection);
std::optional<Alert> missingImagesAlert(const ManualSelection& selection);

} // namespace ostrelle
