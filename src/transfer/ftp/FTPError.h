// SPDX-License-Identifier: GPL-3.0-or-later
#pragma once

#include "core/Error.h"

#include <QString>

namespace ostrelle {

/// A failure of a transfer from a server.
class FTPError : public Error {
public:
    enum class Case {
        invalidURL,
        cannotCreateStream,
        cannotOpenStream,
        readError,
        invalidListing,
        fileNotFound,
        cannotCreateFile,
    };

    /// `reason` is a sentence about the cause; it may be empty.
    explicit FTPError(Case kind, QString reason = {});

    Case kind() const noexcept { return m_kind; }
    /// Not part of the description.
    const QString& reason() const noexcept { return m_reason; }

private:
    Case m_kind;
    QString m_reason;
};

} // namespace ostrelle
