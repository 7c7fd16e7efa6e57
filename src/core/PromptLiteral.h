// SPDX-License-Identifier: GPL-3.0-or-later
#pragma once

#include <QStringView>
#include <span>

namespace ostrelle {

/// A file of resources/prompts as it was compiled in: its name without ".txt" and what is in it.
struct PromptLiteral {
    QStringView name;
    QStringView text;
};

/// All of them, sorted by name. They last as long as the program.
std::span<const PromptLiteral> promptLiterals();

} // namespace ostrelle
