// SPDX-License-Identifier: GPL-3.0-or-later
#include "state/ProcessedFileEntry.h"

#include <QFileInfo>
#include <QHashFunctions>
#include <QTimeZone>
#include <cmath>

namespace ostrelle {

namespace {

constexpr qint64 referenceDate = 978'307'200; // 2001-01-01T00:00:00Z, in seconds since 1970

} // namespace

std::optional<ProcessedFileEntry> ProcessedFileEntry::of(const QString& path) {
    const std::optional<FileStamp> stamp = FileStamp::at(path);
    return stamp ? of(path, *stamp) : std::nullopt;
}

std::optional<ProcessedFileEntry> ProcessedFileEntry::of(const QString& path, const FileStamp& stamp) {
    constexpr double nanosecondsPerSecond = 1e9;
    const auto [seconds, nanoseconds] = stamp.contentChanged;
    const double date = static_cast<double>(seconds - referenceDate) +
                        static_cast<double>(nanoseconds) / nanosecondsPerSecond;
    return ProcessedFileEntry{
        .filename = path.mid(path.lastIndexOf(u'/') + 1), .fileSize = stamp.size, .modificationDate = date};
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
                                         QTimeZone::utc());
}

size_t qHash(const ProcessedFileEntry& entry, size_t seed) noexcept {
    return qHashMulti(seed, entry.filename, entry.fileSize, entry.modificationDate);
}

} // namespace ostrelle
