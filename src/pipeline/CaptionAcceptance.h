// SPDX-License-Identifier: GPL-3.0-or-later
#pragma once

#include "state/SettingsStore.h"

#include <QString>
#include <array>
#include <cstddef>
#include <optional>

namespace ostrelle {

/// The three ways in which a reply becomes a caption.
enum class CaptionPath {
    singleImage, ///< an image captioned by itself
    batchReply,  ///< one of the captions in the reply for a batch
    oneOfBatch,  ///< an image of a batch, requested by itself
};

/// How the paths differ, on purpose.
struct AcceptanceRules {
    bool takesFirstLine; ///< of the reply, trimmed; otherwise the whole reply, untrimmed
    bool keepsUnchanged; ///< a reply equal to the image's own caption, without placeholders, is not written
    bool appendsCredit;  ///< if the settings want one
    bool logsWrite;      ///< with the caption before and after
    bool marksManifest;  ///< right after the write; otherwise ImageTurn does, or the command line
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

/// True when the caption is long enough to be a person's and not a preset's stub: at least 51 user-perceived
/// characters once trimmed.
bool isRealCaption(const QString& caption);

/// The caption with a credit at its end if the settings want one: the image's rights, or else the fallback.
/// If the model has already ended the caption with the rights, they appear twice.
QString finalizeCaption(const QString& caption, const std::optional<QString>& rights,
                        const SettingsStore& settings);

/// True when the texts are canonically equivalent (Unicode): the same characters, however composed.
bool isSameText(const QString& left, const QString& right);

} // namespace ostrelle
