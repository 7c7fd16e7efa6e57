// SPDX-License-Identifier: GPL-3.0-or-later
#include "core/Error.h"

#include <utility>

namespace ostrelle {

Error::Error(QString description) : m_description(std::move(description)), m_utf8(m_description.toUtf8()) {}

QString describe(const std::exception& error) {
    return QString::fromUtf8(error.what());
}

} // namespace ostrelle
