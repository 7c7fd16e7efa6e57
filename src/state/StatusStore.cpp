// SPDX-License-Identifier: GPL-3.0-or-later
#include "state/StatusStore.h"

#include "state/Sum.h"

#include <QVariant>
#include <QVariantList>
#include <algorithm>
#include <numeric>

namespace ostrelle {

using namespace Qt::StringLiterals;

namespace {

const QString totalProcessedKey = u"stats_totalProcessed"_s;
const QString totalFailedKey = u"stats_totalFailed"_s;
const QString lifetimeKey = u"lifetime_imagesProcessed"_s;
const QString processingTimesKey = u"stats_processingTimes"_s;

constexpr qsizetype rememberedRuns = 100; // few enough to write the whole list after each run

qint64 storedCount(const DefaultsStore& defaults, const QString& key) {
    return defaults.get<qint64>(key).value_or(0);
}

/// The stored list, or an empty one if it holds anything but numbers.
QList<double> loadTimes(const DefaultsStore& defaults) {
    QList<double> times;
    const QVariantList stored = defaults.get<QVariantList>(processingTimesKey).value_or(QVariantList());
    for (const QVariant& time : stored) {
        if (time.typeId() != QMetaType::Double && time.typeId() != QMetaType::LongLong) {
            return {};
        }
        times.append(time.toDouble());
    }
    return times;
}

} // namespace

StatusStore::StatusStore(DefaultsStore& defaults, Clock& clock)
    : m_defaults(defaults)
    , m_clock(clock)
    , m_totalProcessedAllTime(storedCount(defaults, totalProcessedKey))
    , m_totalFailedAllTime(storedCount(defaults, totalFailedKey))
    , m_lifetimeImagesProcessed(storedCount(defaults, lifetimeKey))
    , m_processingTimes(loadTimes(defaults)) {}

void StatusStore::recordImageProcessed() {
    countOneMore(m_totalProcessedAllTime, totalProcessedKey, &StatusStore::totalProcessedAllTimeChanged);
    countOneMore(m_lifetimeImagesProcessed, lifetimeKey, &StatusStore::lifetimeImagesProcessedChanged);
    m_defaults.add({{totalProcessedKey, qint64(1)}, {lifetimeKey, qint64(1)}});
    Q_EMIT imageProcessed();
}

void StatusStore::recordImageFailed() {
    countOneMore(m_totalFailedAllTime, totalFailedKey, &StatusStore::totalFailedAllTimeChanged);
    m_defaults.add({{totalFailedKey, qint64(1)}});
}

/// Adds to the stored count, as another process may have counted too.
void StatusStore::countOneMore(qint64& counter, const QString& key, void (StatusStore::*changed)()) {
    publish(this, counter, sumOf(storedCount(m_defaults, key), 1), changed);
}

void StatusStore::beginTimedRun(qint64 imageCount) {
    m_batchStartTime = m_clock.now();
    m_batchImageCount = imageCount;
}

void StatusStore::recordBatchFinished() {
    if (!m_batchStartTime || m_batchImageCount < 1) {
        return;
    }
    const double total = static_cast<double>(m_batchStartTime->msecsTo(m_clock.now())) / 1000;
    const double perImage = total / static_cast<double>(m_batchImageCount);
    m_processingTimes.append(perImage);
    m_processingTimes.remove(0, std::max<qsizetype>(m_processingTimes.size() - rememberedRuns, 0));
    m_defaults.set(processingTimesKey, QVariantList(m_processingTimes.begin(), m_processingTimes.end()));
    const BatchTiming timing{.imageCount = m_batchImageCount,
                             .totalSeconds = total,
                             .secondsPerImage = perImage,
                             .averageSeconds = averageProcessingTime()};
    m_batchStartTime.reset();
    m_batchImageCount = 0;
    Q_EMIT batchFinished(timing);
}

void StatusStore::clearBatch() {
    setCurrentBatchStartIndex(0);
    setCurrentBatchSize(0);
    setCurrentBatchNumber(0);
    setTotalBatchCount(0);
}

void StatusStore::clearStatistics() {
    setTotalProcessedAllTime(0);
    setTotalFailedAllTime(0);
    m_processingTimes.clear();
    m_defaults.remove(processingTimesKey);
}

double StatusStore::successRate() const {
    const qint64 all = sumOf(m_totalProcessedAllTime, m_totalFailedAllTime);
    return all < 1 ? 0 : static_cast<double>(m_totalProcessedAllTime) / static_cast<double>(all) * 100;
}

double StatusStore::averageProcessingTime() const {
    if (m_processingTimes.isEmpty()) {
        return 0;
    }
    const double sum = std::accumulate(m_processingTimes.begin(), m_processingTimes.end(), 0.0);
    return sum / static_cast<double>(m_processingTimes.size());
}

void StatusStore::setTotalProcessedAllTime(qint64 count) {
    publish(this, m_totalProcessedAllTime, count, &StatusStore::totalProcessedAllTimeChanged);
    m_defaults.set(totalProcessedKey, count);
}

void StatusStore::setTotalFailedAllTime(qint64 count) {
    publish(this, m_totalFailedAllTime, count, &StatusStore::totalFailedAllTimeChanged);
    m_defaults.set(totalFailedKey, count);
}

void StatusStore::setLifetimeImagesProcessed(qint64 count) {
    publish(this, m_lifetimeImagesProcessed, count, &StatusStore::lifetimeImagesProcessedChanged);
    m_defaults.set(lifetimeKey, count);
}

} // namespace ostrelle
