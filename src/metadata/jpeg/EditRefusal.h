// SPDX-License-Identifier: GPL-3.0-or-later
#pragma once

#include "core/Error.h"

namespace ostrelle {

/// Metadata of a file that cannot be changed without harm to what else is in it.
class EditRefusal : public Error {
public:
    using Error::Error;
};

} // namespace ostrelle
