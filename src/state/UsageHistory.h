// SPDX-License-Identifier: GPL-3.0-or-later
#pragma once

#include "platform/Clock.h"
#include "platform/DefaultsStore.h"

#include <QList>
#include <QMap>
#include <QObject>
#include <QString>

namespace ostrelle {

/// What one day has cost and brought.
struct UsageDay {
    QString date;                     ///< of the user's time zone, as "yyyy-MM-dd"
    QMap<QString, double> dollars{};  ///< by model
    QMap<QString, qint64> outcomes{}; ///< images by outcome, such as "captioned"

    bool operator==(const UsageDay&) const = default;
};

/// Costs and outcomes by day, for the dashboard: the last 400 days with any. For the thread of the event loop
/// only.
class UsageHistory : public QObject {
    Q_OBJECT

public:
    static constexpr qsizetype rememberedDays = 400;

    /// Both must outlive the history.
    UsageHistory(DefaultsStore& defaults, Clock& clock);

    void recordCost(const QString& model, double dollars);
    void recordOutcome(const QString& outcome);

    /// Oldest first. Other processes may have added to it.
    QList<UsageDay> days() const;

Q_SIGNALS:
    void changed();

private:
    template <typename Change>
    void changeToday(Change change);

    DefaultsStore& m_defaults;
    Clock& m_clock;
};

} // namespace ostrelle
