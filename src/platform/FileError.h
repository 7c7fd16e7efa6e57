// SPDX-License-Identifier: GPL-3.0-or-later
#pragma once

#include "core/Error.h"

namespace ostrelle {

/// A file operation that the operating system refused.
class FileError : public Error {
public:
    /// `action` completes "Could not ...", such as "read"; `code` is the value of errno.
    FileError(const QString& action, const QString& path, int code);

    /// The value of errno.
    int code() const noexcept { return m_code; }
    /// True for a lack of rights: EACCES or EPERM.
    bool isPermissionDenied() const noexcept;

private:
    int m_code;
};

} // namespace ostrelle
