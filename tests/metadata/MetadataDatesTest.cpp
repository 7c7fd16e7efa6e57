// SPDX-License-Identifier: GPL-3.0-or-later
#include "metadata/facts/MetadataDates.h"

#include <gtest/gtest.h>

namespace ostrelle {

using namespace Qt::StringLiterals;

TEST(MetadataDates, RoundTripKeepsWhatIsNoFullInstant) {
    EXPECT_EQ(roundTripIso8601(u"2024-03-05T19:02:33-05:00"_s), u"2024-03-06T00:02:33Z"_s);
    for (const QString& text : {u"2024-03-05T19:02:33.51-05:00"_s, u"last Tuesday"_s}) {
        EXPECT_EQ(roundTripIso8601(text), text);
    }
}

TEST(MetadataDates, NormalizesToTheDayOfTheZone) {
    const struct {
        QString text;
        QByteArray zone;
        QString day;
    } rows[] = {
        {u"2024-03-05T23:30:00-05:00"_s, "America/New_York", u"2024-03-05"_s},
        {u"2024-03-05T23:30:00-05:00"_s, "UTC", u"2024-03-06"_s},
        {u"2024-07-01T03:59:59Z"_s, "America/New_York", u"2024-06-30"_s}, // -04:00 in summer
        {u"2024-12-01T04:30:00Z"_s, "America/New_York", u"2024-11-30"_s}, // -05:00 in winter
        {u"2024-12-01T05:00:00Z"_s, "America/New_York", u"2024-12-01"_s},
        {u"2024:03:05 19:02:33"_s, "Pacific/Kiritimati", u"2024-03-05"_s},
        {u"2024-03-05 19:02:33"_s, "America/Los_Angeles", u"2024-03-05"_s},
        {u"2024:03:10 02:30:00"_s, "America/New_York", u"2024-03-10"_s}, // an hour that the clocks skip
        {u"2018-11-04"_s, "America/Sao_Paulo", u"2018-11-04"_s},         // a midnight that they skip
        {u"2024-3-5"_s, "UTC", u"2024-03-05"_s},
        {u"2024-03-05 at night"_s, "UTC", u"2024-03-05"_s},
        {u"2024-03-05T19:02:33.51Z"_s, "UTC", u"2024-03-05"_s},
        {u"2024-02-30"_s, "UTC", u"2024-02-30"_s}, // no such day, but its first ten characters look like one
        {u"2024:02:30 10:00:00"_s, "UTC", u"2024:02:30 10:00:00"_s},
        {u"2024:03:05"_s, "UTC", u"2024:03:05"_s},
        {u"March 5, 2024"_s, "UTC", u"March 5, 2024"_s},
    };
    for (const auto& row : rows) {
        EXPECT_EQ(normalizeDate(row.text, QTimeZone(row.zone)), row.day)
            << row.text.toStdString() << " in " << row.zone.toStdString();
    }
}

} // namespace ostrelle
