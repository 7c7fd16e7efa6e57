// SPDX-License-Identifier: GPL-3.0-or-later
#include "transfer/remote/DestinationFolder.h"

#include "core/Attempt.h"
#include "core/Error.h"
#include "core/OnThreadPool.h"
#include "metadata/facts/ImageKind.h"
#include "metadata/sidecar/HalfSidecar.h"
#include "platform/AbandonedFiles.h"
#include "platform/Descriptor.h"
#include "platform/FileError.h"
#include "platform/Files.h"
#include "platform/TemporaryFile.h"

#include <fcntl.h>
#include <sys/stat.h>

#include <QDir>
#include <QFile>
#include <QFileInfo>
#include <cerrno>
#include <tuple>
#include <utility>

namespace ostrelle {

using namespace Qt::StringLiterals;

namespace {

QString temporaryPathFor(const QString& path) {
    return QFile::decodeName(temporaryNameFor(QFile::encodeName(path).toStdString()).c_str());
}

std::optional<quint64> deviceOf(const QString& folder) {
    struct stat status{};
    return ::stat(QFile::encodeName(folder).constData(), &status) == 0 ? std::optional<quint64>(status.st_dev)
                                                                       : std::nullopt;
}

/// Asks the file system itself: a file under one name shows under the other, or it does not.
NameRules rulesOf(const QString& folder) {
    const QString probe = temporaryPathFor(folder + u"/Probe"_s);
    QFile file(probe);
    if (!file.open(QIODevice::WriteOnly | QIODevice::NewOnly)) {
        return NameRules::exact;
    }
    QString other = probe;
    other.replace(u".Probe."_s, u".pROBE."_s);
    const bool isFolding = QFileInfo::exists(other);
    file.remove();
    return isFolding ? NameRules::folding : NameRules::exact;
}

/// One call of the system, as a listing may name thousands of files.
LocalCopy lookAt(int folder, const QString& name) {
    struct stat status{};
    if (::fstatat(folder, QFile::encodeName(name).constData(), &status, 0) != 0) {
        return {};
    }
    return {.exists = true,
            .size = S_ISREG(status.st_mode) ? std::optional<qint64>(status.st_size) : std::nullopt,
            .modifiedAt = status.st_mtim.tv_sec};
}

/// Returns where the file is now; empty if there was none. Throws FileError.
QString keep(const QString& path) {
    constexpr int mostCopies = 1000;
    QString inTrash;
    if (!QFileInfo::exists(path) || QFile::moveToTrash(path, &inTrash)) {
        return inTrash;
    }
    for (int number = 1; number <= mostCopies; ++number) {
        const QString copy =
            path + u".replaced"_s + (number == 1 ? QString() : u'.' + QString::number(number));
        if (QFile::rename(path, copy)) { // never over another file
            return copy;
        }
    }
    throw FileError(u"keep"_s, path, EEXIST);
}

/// Throws FileError; the old file is then back in its place.
void exchange(const QString& temporaryPath, const QString& path) {
    flushFile(temporaryPath); // a full disk shows here, while the old file is still there
    // What was fetched while its upload stood still holds no caption to be kept.
    const QString old = isHalfSidecar(path) ? QString() : keep(path);
    const auto moved = attemptNow([&] {
        moveIntoPlace(temporaryPath, path);
        return true;
    });
    if (!moved) {
        if (!old.isEmpty()) {
            QFile::rename(old, path);
        }
        moved.rethrow();
    }
}

QStringList imagesOf(const QString& path) {
    if (isSupportedImage(path)) {
        return {path};
    }
    const QFileInfo sidecar(path);
    QStringList images;
    for (const QString& extension : imageExtensions()) {
        for (const QString& spelled : {extension, extension.toUpper()}) {
            const QString image = sidecar.path() + u'/' + sidecar.completeBaseName() + u'.' + spelled;
            if (QFileInfo::exists(image)) {
                images.append(image);
            }
        }
    }
    return images;
}

} // namespace

DestinationFolder::DestinationFolder(QString path, FolderThreads& threads, FileAccess& access,
                                     ImageClaims& claims)
    : m_path(QDir::cleanPath(path)), m_threads(threads), m_access(access), m_claims(claims) {}

QCoro::Task<NameRules> DestinationFolder::prepare() {
    const ScopedAccess access(m_access, m_path);
    auto work = [folder = m_path, known = m_device] {
        const bool isRemoved = !QFileInfo::exists(folder) && deviceOf(QFileInfo(folder).path()) == known;
        if (!known || isRemoved) {
            QDir().mkpath(folder);
        }
        const std::optional<quint64> device = deviceOf(folder);
        if (known && device != known) {
            throw Error(u"The destination folder's disk is not there any more."_s);
        }
        removeAbandonedTemporaryFiles(folder);
        return std::pair(rulesOf(folder), device);
    };
    std::tie(m_rules, m_device) = co_await onThreadPool(m_threads.of(m_path), work);
    co_return m_rules;
}

QCoro::Task<QHash<QString, LocalCopy>> DestinationFolder::copiesOf(QStringList names) {
    const ScopedAccess access(m_access, m_path);
    auto look = [folder = m_path, names] {
        QHash<QString, LocalCopy> copies;
        copies.reserve(names.size());
        const Descriptor opened(
            ::open(QFile::encodeName(folder).constData(), O_PATH | O_DIRECTORY | O_CLOEXEC));
        for (const QString& name : names) {
            copies.insert(name, lookAt(opened.number(), name));
        }
        return copies;
    };
    co_return co_await onThreadPool(m_threads.of(m_path), look);
}

QCoro::Task<LocalCopy> DestinationFolder::copyOf(QString name) {
    const QHash<QString, LocalCopy> copies = co_await copiesOf({name});
    co_return copies.value(name);
}

QCoro::Task<std::optional<DestinationFolder::Claims>> DestinationFolder::claim(QString name) {
    const ScopedAccess access(m_access, m_path);
    auto take = [claims = &m_claims, path = pathOf(name)] { return claims->tryClaimAll(imagesOf(path)); };
    co_return co_await onThreadPool(m_threads.of(m_path), take);
}

QString DestinationFolder::temporaryPath(const QString& name) const {
    return temporaryPathFor(pathOf(name));
}

QCoro::Task<> DestinationFolder::bringIn(QString temporaryPath, QString name, OldFile old) {
    const ScopedAccess access(m_access, m_path);
    const bool isKept = old == OldFile::kept || m_rules == NameRules::folding;
    auto move = [temporaryPath, path = pathOf(name), isKept, folder = m_path, known = m_device] {
        if (known && deviceOf(folder) != known) {
            throw Error(u"The destination folder's disk is not there any more."_s);
        }
        isKept ? exchange(temporaryPath, path) : moveIntoPlace(temporaryPath, path);
    };
    // The folder's own thread is writing the next file, and the disk may take its time.
    co_await onThreadPool(m_threads.renderersOf(m_path), move);
}

QCoro::Task<> DestinationFolder::putAway(QString name) {
    const ScopedAccess access(m_access, m_path);
    auto away = [path = pathOf(name)] { keep(path); };
    co_await onThreadPool(m_threads.of(m_path), away);
}

QCoro::Task<> DestinationFolder::discard(QString temporaryPath) {
    const ScopedAccess access(m_access, m_path);
    auto remove = [temporaryPath] { QFile::remove(temporaryPath); };
    co_await onThreadPool(m_threads.of(m_path), remove);
}

} // namespace ostrelle
