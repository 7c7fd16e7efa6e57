// SPDX-License-Identifier: GPL-3.0-or-later
#pragma once

#include <QString>
#include <QStringList>
#include <QTimeZone>

namespace ostrelle {

/// How many images there are, and what their captions are like.
struct CaptionCount {
    qsizetype images = 0;
    qsizetype captioned = 0;  ///< with any caption at all
    qsizetype lasting = 0;    ///< with one that stays unless existing captions are overwritten
    QStringList without = {}; ///< the paths of those that have none at all
};

/// Reads the images' captions. An image that cannot be read counts as having none. Never throws; for worker
/// threads.
CaptionCount countCaptions(const QStringList& files, const QTimeZone& zone);

} // namespace ostrelle
