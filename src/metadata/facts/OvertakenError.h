// SPDX-License-Identifier: GPL-3.0-or-later
#pragma once

#include "core/Error.h"

namespace ostrelle {

/// A caption that was not written, since the image is no longer what the model was asked about. The file is
/// as the other program or person left it.
class OvertakenError : public Error {
public:
    enum class Case {
        captionEdited,         ///< somebody wrote a caption meanwhile: theirs stays
        captionAndFactsEdited, ///< likewise, and other metadata: by hand, or an ingest tool that stamps its
                               ///< preset
        factsChanged,          ///< the metadata say something else: the caption is to be asked for anew
        pictureReplaced,       ///< another picture has the image's place, likewise
    };

    explicit OvertakenError(Case kind);

    Case kind() const noexcept { return m_kind; }

private:
    Case m_kind;
};

} // namespace ostrelle
