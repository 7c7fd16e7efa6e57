// SPDX-License-Identifier: GPL-3.0-or-later
#include "platform/ImageClaims.h"

#include "platform/FileError.h"
#include "platform/Files.h"

#include <fcntl.h>
#include <sys/stat.h>

#include <QCryptographicHash>
#include <QDir>
#include <QFile>
#include <QFileInfo>
#include <QTimeZone>
#include <QtEndian>
#include <array>
#include <cerrno>
#include <map>

namespace ostrelle {

using namespace Qt::StringLiterals;

namespace {

/// The file is a table of when the image of each hash was last captioned; a later image in the same slot
/// replaces an earlier one. The locks lie beyond its end, one byte per hash, where the file never reaches.
struct Slot {
    quint64 hash;
    qint64 done; ///< milliseconds since 1970, UTC
};
constexpr quint64 slots = 65'536;
constexpr off_t locksBegin = slots * sizeof(Slot);
constexpr int noticeTaken = -1;

off_t slotOffset(quint64 hash) {
    return static_cast<off_t>(hash % slots * sizeof(Slot));
}

off_t lockOffset(quint64 hash) {
    return locksBegin + static_cast<off_t>(hash >> 2U); // an offset has 63 bits
}

quint64 hashOf(const QString& imagePath) {
    const QFileInfo image(imagePath);
    const QString folder = image.dir().canonicalPath();
    const QString known = folder.isEmpty() ? image.absolutePath() : folder;
    const QByteArray path = QFile::encodeName(known + u'/' + image.fileName());
    return qFromLittleEndian<quint64>(QCryptographicHash::hash(path, QCryptographicHash::Sha256).constData());
}

Descriptor open(const QString& path) {
    const auto tryOpen = [native = QFile::encodeName(path)] {
        return Descriptor(::open(native.constData(), O_RDWR | O_CREAT | O_CLOEXEC | O_NONBLOCK | O_NOCTTY,
                                 S_IRUSR | S_IWUSR));
    };
    Descriptor file = tryOpen();
    if (file.isOpen() || errno != ENOENT) {
        return file;
    }
    try {
        makeFolder(QFileInfo(path).path());
    } catch (const FileError& error) {
        errno = error.code();
        return {};
    }
    return tryOpen();
}

/// 0, or the value of errno: EAGAIN when someone else holds the lock.
int lock(const Descriptor& file, quint64 hash) {
    struct stat status{};
    if (!file.isOpen() || ::fstat(file.number(), &status) != 0) {
        return errno;
    }
    if (!S_ISREG(status.st_mode)) {
        return EINVAL;
    }
    struct flock range{};
    range.l_type = F_WRLCK;
    range.l_whence = SEEK_SET;
    range.l_start = lockOffset(hash);
    range.l_len = 1;
    // The lock belongs to the open file description, so it excludes others in this process too.
    if (::fcntl(file.number(), F_OFD_SETLK, &range) == 0) {
        return 0;
    }
    return errno == EACCES ? EAGAIN : errno;
}

} // namespace

void ImageClaim::recordDone(const QDateTime& time) const {
    const Slot slot{.hash = m_hash, .done = time.toMSecsSinceEpoch()};
    [[maybe_unused]] const ssize_t written =
        ::pwrite(m_file.number(), &slot, sizeof slot, slotOffset(m_hash));
}

std::optional<QDateTime> ImageClaim::lastDone() const {
    Slot slot{};
    const ssize_t got = ::pread(m_file.number(), &slot, sizeof slot, slotOffset(m_hash));
    if (got != sizeof slot || slot.hash != m_hash) {
        return std::nullopt;
    }
    return QDateTime::fromMSecsSinceEpoch(slot.done, QTimeZone::utc());
}

std::shared_ptr<const ImageClaim> ImageClaims::tryClaim(const QString& imagePath) {
    return tryClaim(hashOf(imagePath));
}

std::optional<std::vector<std::shared_ptr<const ImageClaim>>>
ImageClaims::tryClaimAll(const QStringList& imagePaths) {
    std::map<quint64, std::shared_ptr<const ImageClaim>> claimed;
    std::vector<std::shared_ptr<const ImageClaim>> claims;
    for (const QString& path : imagePaths) {
        std::shared_ptr<const ImageClaim>& claim = claimed[hashOf(path)];
        if (!claim) {
            claim = tryClaim(hashOf(path));
        }
        if (!claim) {
            return std::nullopt;
        }
        claims.push_back(claim);
    }
    return claims;
}

QString ImageClaims::takeNotice() {
    int code = m_refusal;
    if (code <= 0 || !m_refusal.compare_exchange_strong(code, noticeTaken)) {
        return {};
    }
    return u"[ImageClaims] Another program may caption the same images at the same time, and pay for them "
           "twice. "_s +
           FileError(u"lock"_s, m_path, code).localizedDescription();
}

std::shared_ptr<const ImageClaim> ImageClaims::tryClaim(quint64 hash) {
    Descriptor file = open(m_path);
    const int refusal = lock(file, hash);
    if (refusal == EAGAIN) {
        return nullptr;
    }
    if (refusal != 0) {
        int none = 0;
        m_refusal.compare_exchange_strong(none, refusal);
        file = Descriptor();
    }
    return std::shared_ptr<const ImageClaim>(new ImageClaim(std::move(file), hash));
}

} // namespace ostrelle
