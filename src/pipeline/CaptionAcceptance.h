// SPDX-License-Identifier: GPL-3.0-or-later
#pragma once

#include "state/SettingsStore.h"

#include <QString>
#include <array>
#include <cstddef>
#include <optional>

namespace ostrelle {

/// The three ways that a reply becomes a caption.
enum class CaptionPath {
    singleImage, ///< an image that is captioned by itself
    batchReply,  ///< one of the captions that came for a batch
    oneOfBatch,  ///< an image of a batch that was asked for by itself
};

/// How the paths differ, on purpose.
struct AcceptanceRules {
    bool takesFirstLine; ///< of the reply, trimmed; otherwise all of it as it came
    bool keepsUnchanged; ///< a reply that is the image's own caption is not written
    bool appendsCredit;  ///< as the settings say
    bool logsWrite;      ///< the caption before and after
    bool marksManifest;  ///< right after the write; otherwise whoever began the image does
};

constexpr AcceptanceRules rulesOf(CaptionPath path) {
    constexpr bool yes = true;
    constexpr bool no = false;
    // clang-format off
    constexpr std::array<AcceptanceRules, 3> table = {{
        //               first line  unchanged  credit  logs  manifest
        /* singleImage */ {yes,       yes,       no,     yes,  no},
        /* batchReply  */ {no,        no,        no,     no,   yes},
        /* oneOfBatch  */ {no,        no,        yes,    no,   yes},
    }};
    // clang-format on
    return table[static_cast<std::size_t>(path)];
}

/// The first line that is not blank, trimmed; of a text without one, the text trimmed.
QString firstNonEmptyLine(const QString& text);

/// True when the caption still holds "City, State" or "City,State", in any case.
bool hasPlaceholder(const QString& caption);

/// True when the caption is long enough to be a person's and not a preset's stub: 51 user-perceived
/// characters without the blanks around them.
bool isRealCaption(const QString& caption);

/// The caption with a credit line at its end, where the user wants one: the image's rights, or else the
/// fallback. A caption that the model has already ended with the rights has them twice then.
QString finalizeCaption(const QString& caption, const std::optional<QString>& rights,
                        const SettingsStore& settings);

/// True when the texts are the same characters, however these are composed (Unicode canonical equivalence).
bool isSameText(const QString& left, const QString& right);

} // namespace ostrelle
