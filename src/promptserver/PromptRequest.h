// SPDX-License-Identifier: GPL-3.0-or-later
#pragma once

#include "core/PromptQuery.h"

#include <QString>
#include <QStringList>
#include <functional>

namespace ostrelle {

/// The values that a request gives a parameter, decoded, in their order.
using RequestParameters = std::function<QStringList(const QString& name)>;

/// What the request asks for. Throws Error with a sentence about the first parameter that is missing, given
/// twice or has a value that the service does not know. Further parameters are ignored.
PromptQuery promptQuery(const RequestParameters& parameters);

} // namespace ostrelle
