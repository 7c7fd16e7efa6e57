// SPDX-License-Identifier: GPL-3.0-or-later
#pragma once

#include "core/Error.h"

namespace ostrelle {

/// The file's metadata cannot be changed without harm to its other contents.
class EditRefusal : public Error {
public:
    using Error::Error;
};

} // namespace ostrelle
