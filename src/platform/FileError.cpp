// SPDX-License-Identifier: GPL-3.0-or-later
#include "platform/FileError.h"

#include <cerrno>
#include <system_error>

namespace ostrelle {

using namespace Qt::StringLiterals;

FileError::FileError(const QString& action, const QString& path, int code)
    : Error(u"Could not %1 %2: %3."_s.arg(action, path,
                                          QString::fromStdString(std::generic_category().message(code))))
    , m_code(code) {}

bool FileError::isPermissionDenied() const noexcept {
    return m_code == EACCES || m_code == EPERM;
}

} // namespace ostrelle
