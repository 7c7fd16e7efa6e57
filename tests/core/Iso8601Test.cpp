// SPDX-License-Identifier: GPL-3.0-or-later
#include "core/Iso8601.h"

#include <gtest/gtest.h>

namespace ostrelle {

using namespace Qt::StringLiterals;

TEST(Iso8601, ReadsTheInternetFormAndGivesTheInstantInUtc) {
    const struct {
        QString text;
        QString utc;
    } rows[] = {
        {u"2024-03-05T19:02:33Z"_s, u"2024-03-05T19:02:33Z"_s},
        {u"2024-03-05T19:02:33-05:00"_s, u"2024-03-06T00:02:33Z"_s},
        {u"2024-03-05T00:30:00+05:45"_s, u"2024-03-04T18:45:00Z"_s},
        {u"2024-02-29T23:59:59+00:00"_s, u"2024-02-29T23:59:59Z"_s},
    };
    for (const auto& row : rows) {
        const std::optional<QDateTime> moment = parseIso8601(row.text);
        ASSERT_TRUE(moment) << row.text.toStdString();
        EXPECT_EQ(formatIso8601(*moment), row.utc);
    }
}

TEST(Iso8601, RefusesEverythingElse) {
    for (const QString& text :
         {u""_s, u"2024-03-05"_s, u"2024-03-05T19:02:33"_s, u"2024-03-05T19:02:33.51Z"_s,
          u"2024-03-05T19:02:33,5Z"_s, u"2024-03-05T19:02Z"_s, u"2024-03-05 19:02:33Z"_s,
          u"2024-3-5T19:02:33Z"_s, u"2023-02-29T00:00:00Z"_s, u"2024-03-05T24:00:00Z"_s,
          u"2024-03-05T19:02:60Z"_s, u"2024-03-05T19:02:33+0500"_s, u"2024-03-05T19:02:33+25:00"_s,
          u" 2024-03-05T19:02:33Z"_s, u"2024-03-05T19:02:33Z\n"_s, u"2024-03-05t19:02:33z"_s}) {
        EXPECT_FALSE(parseIso8601(text)) << text.toStdString();
    }
}

} // namespace ostrelle
