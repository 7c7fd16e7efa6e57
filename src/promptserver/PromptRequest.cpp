// SPDX-License-Identifier: GPL-3.0-or-later
#include "promptserver/PromptRequest.h"

#include "core/Error.h"
#include "core/Text.h"

#include <optional>

namespace ostrelle {

using namespace Qt::StringLiterals;

namespace {

QString theValue(const RequestParameters& parameters, const QString& name) {
    const QStringList values = parameters(name);
    if (values.isEmpty()) {
        throw Error(u"The parameter \""_s + name + u"\" is missing."_s);
    }
    if (values.size() > 1) {
        throw Error(u"The parameter \""_s + name + u"\" is given more than once."_s);
    }
    return values.first();
}

[[noreturn]] void throwUnknown(const QString& name, const QString& value, const QStringList& known) {
    constexpr qsizetype shown = 40;
    throw Error(u"The parameter \""_s + name + u"\" cannot be \""_s + firstCharacters(value, shown) +
                u"\"; it is one of: "_s + known.join(u", "_s) + u'.');
}

template <typename Enum>
Enum choice(const RequestParameters& parameters, const QString& name) {
    const QString value = theValue(parameters, name);
    const std::optional<Enum> found = fromRawValue<Enum>(value);
    if (!found) {
        QStringList known;
        for (const RawValueRow<Enum>& row : rawValueRows<Enum>()) {
            known.append(row.rawValue.toString());
        }
        throwUnknown(name, value, known);
    }
    return *found;
}

bool truthValue(const RequestParameters& parameters, const QString& name) {
    const QString value = theValue(parameters, name);
    if (value != u"true" && value != u"false") {
        throwUnknown(name, value, {u"true"_s, u"false"_s});
    }
    return value == u"true";
}

QString version(const RequestParameters& parameters) {
    const QString served = PromptQuery().version;
    const QString value = theValue(parameters, u"version"_s);
    if (value != served) {
        throwUnknown(u"version"_s, value, {served});
    }
    return value;
}

} // namespace

PromptQuery promptQuery(const RequestParameters& parameters) {
    PromptQuery query;
    query.style = choice<CaptionStyle>(parameters, u"style"_s);
    query.sport = choice<Sport>(parameters, u"sport"_s);
    query.fallback = choice<FallbackBehavior>(parameters, u"fallbackBehavior"_s);
    query.includeOffenseDefense = truthValue(parameters, u"includeOffenseDefense"_s);
    query.prioritizeAudioFiles = truthValue(parameters, u"prioritizeAudioFiles"_s);
    query.version = version(parameters);
    return query;
}

} // namespace ostrelle
