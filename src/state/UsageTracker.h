// SPDX-License-Identifier: GPL-3.0-or-later
#pragma once

#include "platform/Clock.h"
#include "platform/DefaultsStore.h"
#include "platform/PlainLog.h"

#include <QObject>
#include <QString>

namespace ostrelle {

/// Estimates what the model's answers have cost, from their token counts, for the day and for all time.
/// Costs are in US dollars. A new day is noticed at creation and with the next answer only.
/// For the thread of the event loop only.
class UsageTracker : public QObject {
    Q_OBJECT

public:
    /// All arguments must outlive the tracker.
    UsageTracker(DefaultsStore& defaults, Clock& clock, PlainLog& log);

    /// The price of one answer, by fixed prices per token.
    static double costOf(qint64 inputTokens, qint64 outputTokens);

    /// Adds the usage of one answer.
    void recordUsage(qint64 inputTokens, qint64 outputTokens);

    double todaysCost() const { return m_todaysCost; }
    /// Input and output tokens together.
    qint64 todaysTokens() const { return m_todaysTokens; }
    double totalCostAllTime() const { return m_totalCostAllTime; }

Q_SIGNALS:
    /// One answer's estimated price, in US dollars.
    void recorded(double dollars);
    void todaysCostChanged();
    void todaysTokensChanged();
    void totalCostAllTimeChanged();

private:
    QString today() const;
    bool isStoredDayToday() const;
    void setToday(double cost, qint64 tokens);
    PeriodAmounts todaysAmounts(double cost, qint64 tokens) const;
    void readTotals();

    DefaultsStore& m_defaults;
    Clock& m_clock;
    PlainLog& m_log;

    double m_todaysCost = 0;
    qint64 m_todaysTokens = 0;
    double m_totalCostAllTime = 0;
};

} // namespace ostrelle
