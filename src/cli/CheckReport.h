// SPDX-License-Identifier: GPL-3.0-or-later
#pragma once

#include <QList>
#include <QString>

#include "checks/Finding.h"

namespace ostrelle {

/// What the check of one file has found.
struct CheckedFile {
    QString file;
    QString caption;
    QString error; ///< why the file could not be read; empty if it could
    QList<Finding> findings;
};

/// The file's name and a line for each finding.
QString checkText(const CheckedFile& file);

/// The same as one line of JSON. `from` and `to` count Unicode code points of the caption.
QString checkJson(const CheckedFile& file);

} // namespace ostrelle
