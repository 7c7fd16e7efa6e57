// SPDX-License-Identifier: GPL-3.0-or-later
#include "metadata/facts/XMPContext.h"

namespace ostrelle {

using namespace Qt::StringLiterals;

bool contextIsEmpty(const XMPContext& context) {
    return contextDescription(context).isEmpty();
}

QString contextDescription(const XMPContext& context) {
    QStringList lines;
    const auto add = [&lines](const QString& label, const std::optional<QString>& value) {
        if (value && !value->isEmpty()) {
            lines.append(label + *value);
        }
    };
    add(u"City: "_s, context.city);
    add(u"State/Province: "_s, context.state);
    add(u"Country: "_s, context.country);
    add(u"Venue/Location: "_s, context.location);
    add(u"Date: "_s, context.dateISO8601);
    add(u"Event: "_s, context.event);
    add(u"Keywords: "_s, context.keywords.join(u", "_s));
    return lines.join(u" • "_s);
}

} // namespace ostrelle
