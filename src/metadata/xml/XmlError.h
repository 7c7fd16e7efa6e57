// SPDX-License-Identifier: GPL-3.0-or-later
#pragma once

#include "core/Error.h"

namespace ostrelle {

/// XML that is not well formed, or is refused for its size, depth or document type.
class XmlError : public Error {
public:
    using Error::Error;
};

} // namespace ostrelle
