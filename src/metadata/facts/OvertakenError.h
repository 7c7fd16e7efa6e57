// SPDX-License-Identifier: GPL-3.0-or-later
#pragma once

#include "core/Error.h"

namespace ostrelle {

/// The caption was not written because the image is no longer what the model saw. The file is as the other
/// program or person left it.
class OvertakenError : public Error {
public:
    enum class Case {
        captionEdited,         ///< someone wrote a caption meanwhile: theirs stays
        captionAndFactsEdited, ///< the same, and other metadata too: by hand, or by a tool's preset
        factsChanged,          ///< the metadata say something else: a new caption is needed
        pictureReplaced,       ///< another picture has taken the image's place: a new caption is needed
    };

    explicit OvertakenError(Case kind);

    Case kind() const noexcept { return m_kind; }

private:
    Case m_kind;
};

} // namespace ostrelle
