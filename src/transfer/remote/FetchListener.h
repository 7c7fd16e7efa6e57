// SPDX-License-Identifier: GPL-3.0-or-later
#pragma once

#include <QString>
#include <functional>

namespace ostrelle {

/// What became of a file that was to be fetched.
struct FetchedFile {
    QString path; ///< where it is, or should be
    qint64 bytes = 0;
    QString failure; ///< why it has not come, a sentence; empty if it has
};

/// Hears how the transfers go on.
struct FetchListener {
    std::function<void(const QString& name)> begun = [](const QString&) {};
    std::function<void(const FetchedFile& file)> ended = [](const FetchedFile&) {};
    /// A poll or a full download has ended; `failure` is a sentence, empty if it did not fail as a whole.
    std::function<void(const QString& failure)> allEnded = [](const QString&) {};
};

} // namespace ostrelle
