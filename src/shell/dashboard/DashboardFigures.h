// SPDX-License-Identifier: GPL-3.0-or-later
#pragma once

#include "state/AnalyticsStore.h"
#include "state/StatusStore.h"
#include "state/UsageHistory.h"

#include <QDate>
#include <QJsonObject>
#include <QList>
#include <QString>

namespace ostrelle {

/// A card's figure.
struct Figure {
    QString title;
    QString value;
};

/// The six of the dashboard, in their order.
QList<Figure> dashboardFigures(const AnalyticsStore& analytics, const StatusStore& status);

/// The days of the last `days` days, today included; all of them for 0.
QList<DayCount> daysInRange(const QList<DayCount>& all, int days, const QDate& today);

/// A day's row in the list of recent activity.
struct ActivityRow {
    QString day;      ///< "Today", "Yesterday" or "Oct 26"
    QString images;   ///< "12 images"
    QString outcomes; ///< "12 captioned, 1 failed"
    QString cost;     ///< "$0.0123 gpt-4o-mini"
};

/// The newest day first. A day without images is there if it had costs or outcomes.
QList<ActivityRow> recentActivity(const QList<DayCount>& images, const QList<UsageDay>& usage,
                                  const QDate& today);

/// What "Export Data" writes.
QJsonObject exportedFigures(const AnalyticsStore& analytics, const StatusStore& status);

} // namespace ostrelle
