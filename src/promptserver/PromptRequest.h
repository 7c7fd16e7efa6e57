// SPDX-License-Identifier: GPL-3.0-or-later
#pragma once

#include "core/PromptQuery.h"

#include <QString>
#include <QStringList>
#include <functional>

namespace ostrelle {

/// The values of a request's parameter, decoded, in order.
using RequestParameters = std::function<QStringList(const QString& name)>;

/// Parses the request. Throws Error with a sentence about the first parameter that is missing, given twice or
/// unknown in value. Ignores other parameters.
PromptQuery promptQuery(const RequestParameters& parameters);

} // namespace ostrelle
