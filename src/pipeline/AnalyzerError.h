// SPDX-License-Identifier: GPL-3.0-or-later
#pragma once

#include "core/Error.h"

#include <QString>

namespace ostrelle {

/// A failure of the caption run itself rather than of a part it uses.
class AnalyzerError : public Error {
public:
    /// No API key is stored.
    static constexpr int missingKey = -2;
    /// An image of a batch was not captioned; the log has the reason.
    static constexpr int imageFailed = -999;

    AnalyzerError(int code, const QString& description) : Error(description), m_code(code) {}

    int code() const noexcept { return m_code; }

private:
    int m_code;
};

} // namespace ostrelle
