// SPDX-License-Identifier: GPL-3.0-or-later
#pragma once

#include "platform/Descriptor.h"

#include <QDateTime>
#include <QString>
#include <QStringList>
#include <atomic>
#include <memory>
#include <optional>
#include <utility>
#include <vector>

namespace ostrelle {

/// Reserves an image while it is being captioned: no other program of the user can claim it while this lives.
/// The kernel ends the claim of a killed process.
class ImageClaim {
public:
    /// Leaves a note for the next claimant of the image, in this process or another. Only a hint: it may get
    /// lost.
    void recordDone(const QDateTime& time) const;
    /// When the image was last captioned, in UTC to the millisecond, if known.
    std::optional<QDateTime> lastDone() const;

private:
    friend class ImageClaims;
    ImageClaim(Descriptor file, quint64 hash) : m_file(std::move(file)), m_hash(hash) {}

    Descriptor m_file; ///< its open file description holds the lock; closed without protection
    quint64 m_hash;    ///< of the image's path
};

/// Decides which of a user's programs captions an image, by locks in one small file that stays. A program
/// that finds the image claimed waits, tries again and then asks lastDone(). Thread-safe; nothing here
/// blocks.
class ImageClaims {
public:
    /// The file and its folder need not exist yet. Only its user can read it. If it cannot be made or locked,
    /// claims are granted without protection.
    explicit ImageClaims(QString path) : m_path(std::move(path)) {}

    /// Null when the image is already claimed, even by this process. Two paths to the same folder count as
    /// one. Hold the claim, shared, until the image's outcome is on disk.
    std::shared_ptr<const ImageClaim> tryClaim(const QString& imagePath);

    /// Claims all images, in the order of the paths, or none. A path listed twice shares its claim.
    std::optional<std::vector<std::shared_ptr<const ImageClaim>>> tryClaimAll(const QStringList& imagePaths);

    /// Why claims give no protection, as a log line; returned once, then empty.
    QString takeNotice();

private:
    std::shared_ptr<const ImageClaim> tryClaim(quint64 hash);

    QString m_path;
    std::atomic_int m_refusal = 0; ///< the first errno that left a claim unprotected
};

} // namespace ostrelle
