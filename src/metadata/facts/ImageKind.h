// SPDX-License-Identifier: GPL-3.0-or-later
#pragma once

#include <QString>
#include <QStringList>
#include <QStringView>

namespace ostrelle {

/// The extensions of the images that the program captions, in lower case: RAW kinds and JPEG.
const QStringList& imageExtensions();

/// What follows the last dot of the file's name, in lower case.
QString extensionOf(QStringView path);

/// True when the program captions files with this extension: RAW kinds and JPEG, in any case.
bool isSupportedImage(const QString& path);

/// True for a JPEG, which holds its metadata itself; every other image has a sidecar.
bool isJpegImage(const QString& path);

} // namespace ostrelle
