// SPDX-License-Identifier: GPL-3.0-or-later
#pragma once

#include "core/Error.h"

namespace ostrelle {

/// A failure to read or write image metadata.
class XMPError : public Error {
public:
    enum class Case {
        fileMissing, ///< there is no sidecar, or the image cannot be opened
        parseFailed, ///< the picture cannot be decoded
        noPacket,    ///< an XML document without a root element
        writeFailed, ///< the result could not be made or saved
    };

    /// `detail` is a sentence about the cause; it may be empty.
    explicit XMPError(Case kind, QString detail = {});

    Case kind() const noexcept { return m_kind; }
    /// Not part of the description.
    const QString& detail() const noexcept { return m_detail; }

private:
    Case m_kind;
    QString m_detail;
};

} // namespace ostrelle
