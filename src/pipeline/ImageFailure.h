// SPDX-License-Identifier: GPL-3.0-or-later
#pragma once

#include <QString>
#include <exception>

namespace ostrelle {

/// What the failure of a chosen image means to the user.
struct ImageFailure {
    enum class Kind {
        ordinary,
        rateLimit,  ///< the model service accepts no requests for a while
        permission, ///< the caption could not be written to the file
        missingKey, ///< no API key: no other image can be captioned either
    };

    Kind kind = Kind::ordinary;
    QString words;
    /// Whether the words mention a rate limit, whatever the kind.
    bool mentionsRateLimit = false;
};

/// The description of a failure for a report on its image, with any underlying error. `error` is not null.
QString reportedWords(const std::exception_ptr& error);

/// Goes by the type of the failure and its words, minus the image's own path: a file called IMG_4290 is not
/// an HTTP status 429. `error` is not null.
ImageFailure classifyFailure(const std::exception_ptr& error, const QString& image);

} // namespace ostrelle
