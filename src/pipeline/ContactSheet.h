// SPDX-License-Identifier: GPL-3.0-or-later
#pragma once

#include "pipeline/CheckedFiles.h"

#include <QByteArray>
#include <QList>
#include <QString>

namespace ostrelle {

/// A picture of a contact sheet.
struct SheetPicture {
    CheckedFile checked;
    QByteArray jpeg = {}; ///< small and upright; empty if it could not be made
    QString note = {};    ///< such as why there is no picture
};

/// One HTML page (UTF-8) with pictures, captions and findings that needs no other file and no script, and
/// prints well. All texts are foreign: none is taken for markup.
QByteArray contactSheet(const QString& title, const QList<SheetPicture>& pictures);

} // namespace ostrelle
