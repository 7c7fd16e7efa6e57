// SPDX-License-Identifier: GPL-3.0-or-later
#pragma once

#include <QString>
#include <exception>

namespace ostrelle {

/// What a failure of one chosen image means to the user.
struct ImageFailure {
    enum class Kind {
        ordinary,
        rateLimit,  ///< the model service takes no more requests for a while
        permission, ///< the caption could not be put into the file
        missingKey, ///< the API key is gone: no other image can be captioned either
    };

    Kind kind = Kind::ordinary;
    QString words;
    /// Also true of a permission failure whose words speak of a rate limit.
    bool mentionsRateLimit = false;
};

/// The words of a failure for a report on its image, with what lay beneath it. `error` is not null.
QString reportedWords(const std::exception_ptr& error);

/// Judges by the type of the failure and by its words; these without the image's own path, as a file called
/// IMG_4290 is no HTTP status 429. `error` is not null.
ImageFailure classifyFailure(const std::exception_ptr& error, const QString& image);

} // namespace ostrelle
