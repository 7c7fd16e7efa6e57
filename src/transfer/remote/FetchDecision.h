// SPDX-License-Identifier: GPL-3.0-or-later
#pragma once

#include "transfer/ftp/FTPFileInfo.h"

#include <QString>
#include <QStringList>
#include <functional>
#include <optional>

namespace ostrelle {

/// The file of the same name in the destination folder.
struct LocalCopy {
    bool exists = false;
    std::optional<qint64> size = {}; ///< in bytes; nothing if it cannot be told
    qint64 modifiedAt = 0;           ///< seconds since 1970, UTC
};

/// Whether a file has been captioned, by its name alone.
using IsCaptioned = std::function<bool(const QString& name)>;

/// What files are fetched for.
enum class FetchCare {
    poll,     ///< a captioned image is left alone, and one that may still grow is waited for
    download, ///< a full download: only the size counts
};

/// Whether a file is to be fetched.
struct FetchDecision {
    bool isFetched = true;
    bool isCaptioned = false; ///< the image, or the image of the sidecar
    QStringList lines = {};   ///< for the log
};

/// How often an image has been decided on in a poll: again just before it is fetched.
enum class Look { first, again };

/// A local copy of a sidecar whose image has been captioned holds the caption and is never replaced, unless
/// the image is a RAF, ORF, RW2, SRW or PEF.
FetchDecision decideOnMetadata(const FTPFileInfo& file, const LocalCopy& copy,
                               const IsCaptioned& isCaptioned);
/// As in a full download: the sidecar with the caption of an image that is not fetched anew is not either,
/// as nothing would write the caption again. Otherwise the size alone decides.
FetchDecision decideOnMetadataOf(bool isCaptionedImageKept, const FTPFileInfo& file, const LocalCopy& copy);
/// Nor is the local copy of a captioned image. Otherwise its size decides.
FetchDecision decideOnImage(const FTPFileInfo& file, const LocalCopy& copy, const IsCaptioned& isCaptioned,
                            Look look);
/// As in a full download, which fetches captioned images too: the size alone decides.
FetchDecision decideBySize(const FTPFileInfo& file, const LocalCopy& copy, Look look);

} // namespace ostrelle
