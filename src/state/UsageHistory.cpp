// SPDX-License-Identifier: GPL-3.0-or-later
#include "state/UsageHistory.h"

#include <QJsonArray>
#include <QJsonDocument>
#include <QJsonObject>
#include <QTimeZone>
#include <algorithm>

namespace ostrelle {

using namespace Qt::StringLiterals;

namespace {

const QString historyKey = u"UsageHistory_Days"_s;
constexpr qsizetype mostBytes = qsizetype{1024} * 1024;

template <typename Number>
QMap<QString, Number> numbersOf(const QJsonValue& value) {
    QMap<QString, Number> numbers;
    const QJsonObject object = value.toObject();
    for (auto entry = object.begin(); entry != object.end(); ++entry) {
        const double number = entry->toDouble(-1);
        if (number >= 0 && number < 1e15) {
            numbers.insert(entry.key(), static_cast<Number>(number));
        }
    }
    return numbers;
}

template <typename Number>
QJsonObject objectOf(const QMap<QString, Number>& numbers) {
    QJsonObject object;
    for (auto entry = numbers.begin(); entry != numbers.end(); ++entry) {
        object.insert(entry.key(), *entry);
    }
    return object;
}

QByteArray jsonOf(const QList<UsageDay>& days) {
    QJsonArray entries;
    for (const UsageDay& day : days) {
        entries.append(QJsonObject{{u"date"_s, day.date},
                                   {u"dollars"_s, objectOf(day.dollars)},
                                   {u"outcomes"_s, objectOf(day.outcomes)}});
    }
    return QJsonDocument(entries).toJson(QJsonDocument::Compact);
}

} // namespace

UsageHistory::UsageHistory(DefaultsStore& defaults, Clock& clock) : m_defaults(defaults), m_clock(clock) {}

void UsageHistory::recordCost(const QString& model, double dollars) {
    changeToday([&](UsageDay& day) { day.dollars[model] += dollars; });
}

void UsageHistory::recordOutcome(const QString& outcome) {
    changeToday([&](UsageDay& day) { ++day.outcomes[outcome]; });
}

/// What is damaged counts as nothing.
QList<UsageDay> UsageHistory::days() const {
    const QByteArray json = m_defaults.get<QByteArray>(historyKey).value_or(QByteArray());
    QList<UsageDay> days;
    if (json.size() > mostBytes) {
        return days;
    }
    const QJsonArray entries = QJsonDocument::fromJson(json).array();
    for (const QJsonValue& entry : entries) {
        days.append({.date = entry[u"date"].toString(),
                     .dollars = numbersOf<double>(entry[u"dollars"]),
                     .outcomes = numbersOf<qint64>(entry[u"outcomes"])});
    }
    std::sort(days.begin(), days.end(), [](const UsageDay& a, const UsageDay& b) { return a.date < b.date; });
    return days;
}

template <typename Change>
void UsageHistory::changeToday(Change change) {
    const QString today = m_clock.now().toTimeZone(m_clock.timeZone()).date().toString(u"yyyy-MM-dd");
    QList<UsageDay> all = days();
    auto day = std::find_if(all.begin(), all.end(), [&](const UsageDay& one) { return one.date == today; });
    if (day == all.end()) {
        all.append({.date = today});
        day = all.end() - 1;
    }
    change(*day);
    all.remove(0, std::max<qsizetype>(all.size() - rememberedDays, 0));
    m_defaults.set(historyKey, jsonOf(all));
    Q_EMIT changed();
}

} // namespace ostrelle
