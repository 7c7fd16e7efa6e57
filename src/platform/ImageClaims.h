// SPDX-License-Identifier: GPL-3.0-or-later
#pragma once

#include "platform/Descriptor.h"

#include <QDateTime>
#include <QString>
#include <QStringList>
#include <atomic>
#include <memory>
#include <optional>
#include <vector>

namespace ostrelle {

/// An image that is being captioned, kept from the other programs of the user while this lives. The kernel
/// ends the claim of a process that is killed.
class ImageClaim {
public:
    /// Leaves word for whoever claims the image next, in this process or another. A hint: it may get lost.
    void recordDone(const QDateTime& time) const;
    /// When the image was last captioned, in UTC and to the millisecond, as far as that is known.
    std::optional<QDateTime> lastDone() const;

private:
    friend class ImageClaims;
    ImageClaim(Descriptor file, quint64 hash) : m_file(std::move(file)), m_hash(hash) {}

    Descriptor m_file; ///< its open file description holds the lock; closed when there is no protection
    quint64 m_hash;    ///< of the image's path
};

/// Settles among all programs of a user who captions an image, by locks in one small file that stays. Who
/// comes second waits, tries again and then asks lastDone(). May be used from several threads at once;
/// nothing here blocks.
class ImageClaims {
public:
    /// The file and its folder need not exist yet. Only its user can read it; where it cannot be made or
    /// locked, claims are granted without protection.
    explicit ImageClaims(QString path) : m_path(std::move(path)) {}

    /// Null when somebody has claimed the image, this process included. Two paths to the same folder agree.
    /// To be held, shared, until the image's outcome is on disk.
    std::shared_ptr<const ImageClaim> tryClaim(const QString& imagePath);

    /// Claims all images, in the order of the paths, or none. A path that is there twice shares its claim.
    std::optional<std::vector<std::shared_ptr<const ImageClaim>>> tryClaimAll(const QStringList& imagePaths);

    /// Why claims give no protection, in words for the log; once, and otherwise empty.
    QString takeNotice();

private:
    std::shared_ptr<const ImageClaim> tryClaim(quint64 hash);

    QString m_path;
    std::atomic_int m_refusal = 0; ///< the first value of errno that kept a claim from being protected
};

} // namespace ostrelle
