// SPDX-License-Identifier: GPL-3.0-or-later
#pragma once

#include <QStringView>
#include <span>

namespace ostrelle {

/// A file of resources/prompts, compiled in: its name without ".txt" and its contents.
struct PromptLiteral {
    QStringView name;
    QStringView text;
};

/// All of them, sorted by name. They last as long as the program.
std::span<const PromptLiteral> promptLiterals();

} // namespace ostrelle
