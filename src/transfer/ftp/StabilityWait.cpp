// SPDX-License-Identifier: GPL-3.0-or-later
#include "transfer/ftp/StabilityWait.h"

#include "core/Attempt.h"
#include "transfer/ftp/FTPError.h"

#include <QHash>
#include <algorithm>
#include <memory>
#include <optional>
#include <utility>

namespace ostrelle {

using namespace Qt::StringLiterals;
using std::chrono::milliseconds;

namespace {

std::optional<qint64> findSize(const QList<FTPFileInfo>& listing, const QString& name) {
    const auto found = std::find_if(listing.begin(), listing.end(), [&name](const FTPFileInfo& entry) {
        return !entry.isDirectory && entry.name == name;
    });
    return found == listing.end() ? std::nullopt : std::optional(found->size);
}

/// Runs out whatever happens to the computer's clock.
class Deadline {
public:
    Deadline(Clock& clock, milliseconds span) {
        if (span <= milliseconds(0)) {
            *m_isOver = true;
        } else {
            m_timer = clock.after(span, [isOver = m_isOver] { *isOver = true; });
        }
    }
    bool isOver() const { return *m_isOver; }

private:
    std::shared_ptr<bool> m_isOver = std::make_shared<bool>(false);
    std::unique_ptr<Timer> m_timer;
};

/// The sizes seen of one file, one after the other.
class Sightings {
public:
    /// True once the file is stable.
    bool see(qint64 size) {
        const bool isFirst = m_lastSize == -1;
        m_hasChanged = m_hasChanged || (!isFirst && size != m_lastSize);
        if (size == m_lastSize && size >= 1) {
            return std::exchange(m_stableCount, 1) >= 1;
        }
        m_stableCount = isFirst && size > 0 ? 1 : 0;
        m_lastSize = size;
        return false;
    }
    qint64 lastSize() const { return m_lastSize; }
    bool hasChanged() const { return m_hasChanged; }

private:
    qint64 m_lastSize = -1;
    int m_stableCount = 0;
    bool m_hasChanged = false;
};

/// The sizes seen of all files of a batch, sweep by sweep.
class BatchSightings {
public:
    /// True once all files are stable.
    bool sweep(const QStringList& names, const QList<FTPFileInfo>& listing) {
        QHash<QString, qint64> sizes; // of the first entry of each name
        for (const FTPFileInfo& entry : listing) {
            if (!entry.isDirectory && !sizes.contains(entry.name)) {
                sizes.insert(entry.name, entry.size);
            }
        }
        bool areStable = true;
        for (const QString& name : names) {
            const auto size = sizes.constFind(name);
            areStable = size != sizes.constEnd() && see(name, *size) && areStable;
        }
        return areStable;
    }
    bool hasSize(const QString& name) const { return m_lastSizes.value(name) > 0; }

private:
    bool see(const QString& name, qint64 size) {
        constexpr int sightingsAfterTheFirst = 2;
        const bool isSame = size >= 1 && m_lastSizes.value(name, -1) == size;
        m_stableCounts[name] = isSame ? m_stableCounts.value(name) + 1 : 0;
        m_lastSizes[name] = size;
        return m_stableCounts.value(name) >= sightingsAfterTheFirst;
    }

    QHash<QString, qint64> m_lastSizes;
    QHash<QString, int> m_stableCounts;
};

} // namespace

qint64 sizeInListing(const QList<FTPFileInfo>& listing, const QString& name) {
    const std::optional<qint64> size = findSize(listing, name);
    if (!size) {
        throw FTPError(FTPError::Case::fileNotFound);
    }
    return *size;
}

StabilityWait::StabilityWait(FileTransferClient& client, Clock& clock, PlainLog& log, QString component)
    : m_client(client), m_clock(clock), m_log(log), m_component(std::move(component)) {}

QCoro::Task<Stability> StabilityWait::waitForFile(QString name, milliseconds checkInterval,
                                                  milliseconds timeout) {
    const Deadline deadline(m_clock, timeout);
    Sightings sightings;
    while (!deadline.isOver()) {
        const QList<FTPFileInfo> listing = co_await m_client.listFiles();
        // A file that is not there may still arrive.
        if (const std::optional<qint64> size = findSize(listing, name); size && sightings.see(*size)) {
            print(u"File %1 is stable at size %2"_s.arg(name, QString::number(*size)));
            co_return Stability{.isStable = true, .hasChanged = sightings.hasChanged(), .size = *size};
        }
        co_await m_clock.sleep(checkInterval);
    }
    const bool hasSize = sightings.lastSize() >= 1;
    print(hasSize ? u"File %1 appears stable at size %2 (timeout reached)"_s.arg(
                        name, QString::number(sightings.lastSize()))
                  : u"Timeout waiting for file %1 to stabilize"_s.arg(name));
    co_return Stability{
        .isStable = hasSize, .hasChanged = sightings.hasChanged(), .size = sightings.lastSize()};
}

QCoro::Task<bool> StabilityWait::waitForBatch(QStringList names, milliseconds checkInterval,
                                              milliseconds timeout) {
    if (names.isEmpty()) {
        co_return true;
    }
    print(u"Waiting for batch of %1 files to stabilize..."_s.arg(names.size()));
    const Deadline deadline(m_clock, timeout);
    BatchSightings sightings;
    while (!deadline.isOver()) {
        const QList<FTPFileInfo> listing = co_await m_client.listFiles();
        if (sightings.sweep(names, listing)) {
            print(u"All %1 files in batch are stable"_s.arg(names.size()));
            co_return true;
        }
        co_await m_clock.sleep(checkInterval);
    }
    names.removeIf([&sightings](const QString& name) { return sightings.hasSize(name); });
    if (!names.isEmpty() && !co_await haveSomeSize(names)) {
        print(u"Timeout waiting for batch to stabilize"_s);
        co_return false;
    }
    print(u"Batch appears stable (timeout reached, all files have size > 0)"_s);
    co_return true;
}

QCoro::Task<bool> StabilityWait::haveSomeSize(QStringList names) {
    const auto listing = co_await attempt(m_client.listFiles());
    if (!listing) {
        co_return false;
    }
    co_return std::all_of(names.begin(), names.end(), [&listing](const QString& name) {
        return findSize(*listing, name).value_or(0) >= 1;
    });
}

void StabilityWait::print(const QString& words) {
    m_log.print(u"[%1] "_s.arg(m_component) + words);
}

} // namespace ostrelle
