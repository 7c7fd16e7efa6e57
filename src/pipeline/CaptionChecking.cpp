// SPDX-License-Identifier: GPL-3.0-or-later
#include "pipeline/CaptionChecking.h"

#include "core/Iso8601.h"

#include <QDateTime>

namespace ostrelle {

CheckedCaption checkedCaption(const QString& caption, const ImageFacts& facts, CaptionStyle style,
                              const QTimeZone& zone) {
    const QString date = facts.context.dateISO8601.value_or(QString());
    std::optional<QDate> local;
    if (const std::optional<QDateTime> moment = parseIso8601(date)) {
        local = moment->toTimeZone(zone).date();
    }
    return {.caption = caption,
            .style = style,
            .context = facts.context,
            .rights = facts.rights,
            .creator = facts.creator,
            .days = daysOf(date, local)};
}

RosterNames rosterNames(const CodeReplacements& replacements) {
    return RosterNames(rosterEntries(replacements));
}

} // namespace ostrelle
