// SPDX-License-Identifier: GPL-3.0-or-later
#include "state/UsageTracker.h"

#include "state/Publish.h"
#include "state/Sum.h"

#include <QDateTime>
#include <QTimeZone>

namespace ostrelle {

using namespace Qt::StringLiterals;

namespace {

const QString costKey = u"UsageTracker_TodaysCost"_s;
const QString tokensKey = u"UsageTracker_TodaysTokens"_s;
const QString dayKey = u"UsageTracker_LastDate"_s;
const QString totalCostKey = u"UsageTracker_TotalCostAllTime"_s;

constexpr double inputDollarsPerMillion = 0.15;
constexpr double outputDollarsPerMillion = 0.6;

QString dollars(double amount) {
    return u'$' + QString::number(amount, 'f', 4);
}

} // namespace

UsageTracker::UsageTracker(DefaultsStore& defaults, Clock& clock, PlainLog& log)
    : m_defaults(defaults), m_clock(clock), m_log(log) {
    readTotals();
    if (!isStoredDayToday()) {
        m_defaults.addAll({}, todaysAmounts(0, 0));
    }
}

/// Reads the stored totals again, as another process may have added to them.
void UsageTracker::readTotals() {
    const bool isToday = isStoredDayToday();
    setToday(isToday ? m_defaults.get<double>(costKey).value_or(0) : 0,
             isToday ? m_defaults.get<qint64>(tokensKey).value_or(0) : 0);
    publish(this, m_totalCostAllTime, m_defaults.get<double>(totalCostKey).value_or(0),
            &UsageTracker::totalCostAllTimeChanged);
}

double UsageTracker::costOf(qint64 inputTokens, qint64 outputTokens) {
    constexpr double million = 1'000'000;
    return static_cast<double>(inputTokens) / million * inputDollarsPerMillion +
           static_cast<double>(outputTokens) / million * outputDollarsPerMillion;
}

void UsageTracker::recordUsage(qint64 inputTokens, qint64 outputTokens) {
    if (!isStoredDayToday()) {
        m_log.print(u"[UsageTracker] New day detected, resetting counters"_s);
    }
    readTotals();
    const double cost = costOf(inputTokens, outputTokens);
    const qint64 tokens = sumOf(inputTokens, outputTokens);
    setToday(m_todaysCost + cost, sumOf(m_todaysTokens, tokens));
    publish(this, m_totalCostAllTime, m_totalCostAllTime + cost, &UsageTracker::totalCostAllTimeChanged);
    m_defaults.addAll({{totalCostKey, cost}}, todaysAmounts(cost, tokens));
    Q_EMIT recorded(cost);
    m_log.print(u"[UsageTracker] Recorded: %1 in + %2 out = %3. Today: %4, All time: %5"_s.arg(
        QString::number(inputTokens), QString::number(outputTokens), dollars(cost), dollars(m_todaysCost),
        dollars(m_totalCostAllTime)));
}

/// The user's local date.
QString UsageTracker::today() const {
    return m_clock.now().toTimeZone(m_clock.timeZone()).date().toString(u"yyyy-MM-dd");
}

bool UsageTracker::isStoredDayToday() const {
    return m_defaults.get<QString>(dayKey) == today();
}

void UsageTracker::setToday(double cost, qint64 tokens) {
    publish(this, m_todaysCost, cost, &UsageTracker::todaysCostChanged);
    publish(this, m_todaysTokens, tokens, &UsageTracker::todaysTokensChanged);
}

PeriodAmounts UsageTracker::todaysAmounts(double cost, qint64 tokens) const {
    return {.periodKey = dayKey, .period = today(), .amounts = {{costKey, cost}, {tokensKey, tokens}}};
}

} // namespace ostrelle
