// SPDX-License-Identifier: GPL-3.0-or-later
#pragma once

#include "platform/FileReferences.h"

namespace ostrelle {

/// References for a desktop without a sandbox: the absolute path and whether it is a folder. A reference is
/// stale when a file has taken the place of its folder, or a folder that of its file.
class PathReferences : public FileReferences {
public:
    QByteArray make(const QString& path) const override;
    QString pathOf(const QByteArray& reference) const override;
    ResolvedFile resolve(const QByteArray& reference) const override;
};

} // namespace ostrelle
