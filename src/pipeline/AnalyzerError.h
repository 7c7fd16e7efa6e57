// SPDX-License-Identifier: GPL-3.0-or-later
#pragma once

#include "core/Error.h"

#include <QString>

namespace ostrelle {

/// A failure of the caption run itself, as opposed to one of the parts that it uses.
class AnalyzerError : public Error {
public:
    /// No API key is stored.
    static constexpr int missingKey = -2;
    /// An image of a batch was not captioned; why is in the log.
    static constexpr int imageFailed = -999;

    AnalyzerError(int code, const QString& description) : Error(description), m_code(code) {}

    int code() const noexcept { return m_code; }

private:
    int m_code;
};

} // namespace ostrelle
