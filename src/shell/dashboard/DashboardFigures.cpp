// SPDX-License-Identifier: GPL-3.0-or-later
#include "shell/dashboard/DashboardFigures.h"

#include "core/Iso8601.h"
#include "core/Text.h"

#include <QJsonArray>
#include <QLocale>
#include <QMap>

namespace ostrelle {

using namespace Qt::StringLiterals;

namespace {

QString withOneDecimal(double number) {
    return QString::number(number, 'f', 1);
}

QString nameOf(const QString& date, const QDate& today) {
    const QDate day = QDate::fromString(date, u"yyyy-MM-dd"_s);
    if (!day.isValid()) {
        return date;
    }
    if (day == today) {
        return u"Today"_s;
    }
    return day == today.addDays(-1) ? u"Yesterday"_s : QLocale::c().toString(day, u"MMM d");
}

QString costOf(const QMap<QString, double>& dollars) {
    QStringList parts;
    for (auto model = dollars.begin(); model != dollars.end(); ++model) {
        parts.append(u"$%1 %2"_s.arg(QString::number(*model, 'f', 4), model.key()));
    }
    return parts.join(u", "_s);
}

QString outcomesOf(const QMap<QString, qint64>& outcomes) {
    QStringList parts;
    for (auto outcome = outcomes.begin(); outcome != outcomes.end(); ++outcome) {
        parts.append(u"%1 %2"_s.arg(*outcome).arg(outcome.key()));
    }
    return parts.join(u", "_s);
}

} // namespace

QList<Figure> dashboardFigures(const AnalyticsStore& analytics, const StatusStore& status) {
    return {{u"Total Launches"_s, QString::number(analytics.totalLaunches())},
            {u"Images Processed"_s, QString::number(analytics.totalImagesProcessed())},
            {u"Avg Process Time"_s, withOneDecimal(status.averageProcessingTime()) + u's'},
            {u"Days Active"_s, QString::number(analytics.daysSinceInstall())},
            {u"Images per Day"_s, withOneDecimal(analytics.imagesPerDay())},
            {u"Total Downloads"_s, QString::number(status.ftpFilesDownloaded())}};
}

QList<DayCount> daysInRange(const QList<DayCount>& all, int days, const QDate& today) {
    const QString first = days > 0 ? today.addDays(1 - days).toString(u"yyyy-MM-dd") : QString();
    QList<DayCount> inRange;
    for (const DayCount& day : all) {
        if (day.date >= first) {
            inRange.append(day);
        }
    }
    return inRange;
}

QList<ActivityRow> recentActivity(const QList<DayCount>& images, const QList<UsageDay>& usage,
                                  const QDate& today) {
    QMap<QString, ActivityRow> byDate;
    for (const DayCount& day : images) {
        byDate[day.date].images = u"%1 image%2"_s.arg(day.count).arg(plural(day.count));
    }
    for (const UsageDay& day : usage) {
        ActivityRow& row = byDate[day.date];
        row.outcomes = outcomesOf(day.outcomes);
        row.cost = costOf(day.dollars);
    }
    QList<ActivityRow> rows;
    for (auto day = byDate.begin(); day != byDate.end(); ++day) {
        day->day = nameOf(day.key(), today);
        if (day->images.isEmpty()) {
            day->images = u"0 images"_s;
        }
        rows.prepend(*day);
    }
    return rows;
}

QJsonObject exportedFigures(const AnalyticsStore& analytics, const StatusStore& status) {
    QJsonArray days;
    for (const DayCount& day : analytics.imagesProcessedByDay()) {
        days.append(QJsonObject{{u"date"_s, day.date}, {u"count"_s, day.count}});
    }
    const std::optional<QDateTime> installed = analytics.installDate();
    return {{u"total_launches"_s, analytics.totalLaunches()},
            {u"total_images_processed"_s, analytics.totalImagesProcessed()},
            {u"average_processing_time"_s, status.averageProcessingTime()},
            {u"install_date"_s, installed ? formatIso8601(*installed) : QString()},
            {u"days_active"_s, analytics.daysSinceInstall()},
            {u"images_per_day"_s, analytics.imagesPerDay()},
            {u"images_by_day"_s, days}};
}

} // namespace ostrelle
