// SPDX-License-Identifier: GPL-3.0-or-later
#pragma once

#include "pipeline/ImageOutcome.h"
#include "transfer/remote/FetchListener.h"

#include <QString>

namespace ostrelle {

/// The result for an image in lines for a person: the outcome, the captions before and after, the rendition
/// and the cost.
QString reportText(const ImageOutcome& image);

/// Outcome, file name, and the new caption or the reason, in one line for a person.
QString reportLine(const ImageOutcome& image);

/// The same as one line of JSON.
QString reportJson(const ImageOutcome& image);

/// What became of a file on the server, in one line for a person.
QString fetchLine(const FetchedFile& file);

/// The same as one line of JSON.
QString fetchJson(const FetchedFile& file);

} // namespace ostrelle
