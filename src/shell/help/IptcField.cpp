// SPDX-License-Identifier: GPL-3.0-or-later
#include "shell/help/IptcField.h"

namespace ostrelle {

using namespace Qt::StringLiterals;

std::span<const IptcField> iptcFields() {
    static const QString place = u"Required for location formatting: 'in City, State'"_s;
    static const IptcField fields[] = {
        {u"Date/Time"_s, u"field.date"_s,
         u"Critical for all caption styles.\nIf missing, date will be omitted from the caption."_s},
        {u"City"_s, u"field.city"_s, place},
        {u"State/Province"_s, u"field.state"_s, place},
        {u"Venue/Location"_s, u"field.venue"_s,
         u"Creates specific captions: 'at Kroger Field in Lexington, Ky.'"_s},
        {u"Event"_s, u"field.event"_s,
         u"Used for team names and context.\nFormat as 'Team A vs. Team B' when possible."_s},
        {u"Copyright"_s, u"field.copyright"_s,
         u"Required if you want your copyright/credit line at the end of the caption.\nIf missing, your "
         "copyright/credit line will not be included."_s},
    };
    return fields;
}

} // namespace ostrelle
