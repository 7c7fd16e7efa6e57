// SPDX-License-Identifier: GPL-3.0-or-later
#pragma once

#include "platform/FileReferences.h"

namespace ostrelle {

/// References for a desktop without a sandbox: the absolute path and whether it is a folder. A reference
/// whose folder has become a file, or the other way round, is stale.
class PathReferences : public FileReferences {
public:
    QByteArray make(const QString& path) const override;
    QString pathOf(const QByteArray& reference) const override;
    ResolvedFile resolve(const QByteArray& reference) const override;
};

} // namespace ostrelle
