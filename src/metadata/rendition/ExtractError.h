// SPDX-License-Identifier: GPL-3.0-or-later
#pragma once

#include "core/Error.h"

namespace ostrelle {

/// No rendition of a picture could be made.
class ExtractError : public Error {
public:
    enum class Case { cannotOpen, noImage, cannotCreateThumbnail, cannotEncodeJPEG };

    /// `reason` is a phrase without a full stop, such as "the file is cut short"; it may be empty.
    explicit ExtractError(Case kind, const QString& reason = {});

    Case kind() const noexcept { return m_kind; }
    /// The phrase, for use in another sentence.
    QString reason() const { return m_reason; }

private:
    Case m_kind;
    QString m_reason;
};

} // namespace ostrelle
