// SPDX-License-Identifier: GPL-3.0-or-later
#pragma once

#include <QString>

namespace ostrelle {

/// Who owns the folder, its mode, and what the user may do there, in a sentence. Asks the file system.
QString folderRights(const QString& folder);

} // namespace ostrelle
