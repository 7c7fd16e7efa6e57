// SPDX-License-Identifier: GPL-3.0-or-later
#include "state/ProcessedFileEntry.h"

#include <sys/stat.h>

#include <QFile>
#include <QFileInfo>
#include <QHashFunctions>
#include <cmath>

namespace ostrelle {

namespace {

constexpr qint64 referenceDate = 978'307'200; // 2001-01-01T00:00:00Z, in seconds since 1970

} // namespace

std::optional<ProcessedFileEntry> ProcessedFileEntry::of(const QString& path) {
    struct stat status{};
    if (::stat(QFile::encodeName(path).constData(), &status) != 0) {
        return std::nullopt;
    }
    constexpr double nanosecondsPerSecond = 1e9;
    const double date = static_cast<double>(status.st_mtim.tv_sec - referenceDate) +
                        static_cast<double>(status.st_mtim.tv_nsec) / nanosecondsPerSecond;
    return ProcessedFileEntry{
        .filename = QFileInfo(path).fileName(), .fileSize = status.st_size, .modificationDate = date};
}

ProcessedFileEntry ProcessedFileEntry::placeholder(const QString& path, const QDateTime& date) {
    constexpr qint64 millisecondsPerSecond = 1000;
    const qint64 milliseconds = date.toMSecsSinceEpoch() - referenceDate * millisecondsPerSecond;
    return {.filename = QFileInfo(path).fileName(),
            .fileSize = 0,
            .modificationDate = static_cast<double>(milliseconds) / millisecondsPerSecond};
}

QDateTime ProcessedFileEntry::date() const {
    return QDateTime::fromSecsSinceEpoch(static_cast<qint64>(std::floor(modificationDate)) + referenceDate,
                                         Qt::UTC);
}

size_t qHash(const ProcessedFileEntry& entry, size_t seed) noexcept {
    return qHashMulti(seed, entry.filename, entry.fileSize, entry.modificationDate);
}

} // namespace ostrelle
