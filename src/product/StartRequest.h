// SPDX-License-Identifier: GPL-3.0-or-later
#pragma once

#include <QByteArray>
#include <QString>
#include <QStringList>
#include <optional>

namespace ostrelle {

/// What somebody wants who starts the program, or starts it again while it runs.
struct StartRequest {
    enum class Wish {
        show,           ///< the window
        hide,           ///< just the tray, where there is one; as when the user logs in
        captionImages,  ///< the question which images to caption
        switchAutoMode, ///< on if it is off, and off if it is on
    };

    Wish wish = Wish::show;
    QStringList files = {}; ///< to caption, as absolute paths
    QByteArray activationToken =
        {}; ///< of the desktop (XDG_ACTIVATION_TOKEN): lets a window come to the front

    bool operator==(const StartRequest&) const = default;

    /// For the program that runs already.
    QByteArray toBytes() const;
    /// Nothing when the bytes are no request or only a part of one.
    static std::optional<StartRequest> fromBytes(const QByteArray& bytes);
};

} // namespace ostrelle
