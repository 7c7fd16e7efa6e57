// SPDX-License-Identifier: GPL-3.0-or-later
#pragma once

#include <QMetaType>
#include <QString>
#include <QStringList>
#include <optional>

namespace ostrelle {

/// What became of one image.
struct ImageReport {
    enum class Outcome {
        captioned, ///< a caption was written
        skipped,   ///< left as it is, on purpose
        failed,
    };

    QString file;
    Outcome outcome = Outcome::failed;
    QString reason;       ///< why it was skipped or failed
    QStringList warnings; ///< what its caption was made without, a sentence each
    std::optional<QString> captionBefore;
    std::optional<QString> captionAfter;
    std::optional<QString> previewPath; ///< the copy of what the model saw
    std::optional<double> cost;         ///< the estimate for this image, in US dollars
};

} // namespace ostrelle

Q_DECLARE_METATYPE(ostrelle::ImageReport)
