// SPDX-License-Identifier: GPL-3.0-or-later
#pragma once

#include "core/Error.h"

namespace ostrelle {

/// XML that is not well formed, or that is refused for its size, its depth or its document type.
class XmlError : public Error {
public:
    using Error::Error;
};

} // namespace ostrelle
