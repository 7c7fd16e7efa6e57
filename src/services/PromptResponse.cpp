// SPDX-License-Identifier: GPL-3.0-or-later
#include "services/PromptResponse.h"

#include "services/PromptError.h"

#include <array>

namespace ostrelle {

using namespace Qt::StringLiterals;

namespace {

struct TemplateField {
    QStringView name;
    QString PromptTemplates::* text;
};

constexpr std::array templateFields = {
    TemplateField{u"commonRules", &PromptTemplates::commonRules},
    TemplateField{u"sportInstructions", &PromptTemplates::sportInstructions},
    TemplateField{u"styleRules", &PromptTemplates::styleRules},
    TemplateField{u"fallbackInstructions", &PromptTemplates::fallbackInstructions},
    TemplateField{u"audioInstructions", &PromptTemplates::audioInstructions},
    TemplateField{u"offenseDefenseInstructions", &PromptTemplates::offenseDefenseInstructions},
};

} // namespace

QJsonObject toJson(const PromptTemplates& templates) {
    QJsonObject json;
    for (const TemplateField& field : templateFields) {
        json.insert(field.name, templates.*field.text);
    }
    return json;
}

PromptTemplates templatesFromJson(const JsonFields& json) {
    PromptTemplates templates;
    for (const TemplateField& field : templateFields) {
        templates.*field.text = json.text(field.name.toString());
    }
    return templates;
}

PromptTemplates decodePromptResponse(const QByteArray& body) {
    try {
        const JsonFields response = JsonFields::parse(body);
        for (const QString& name : {u"version"_s, u"style"_s, u"sport"_s}) {
            response.text(name);
        }
        const JsonFields metadata = response.object(u"metadata"_s);
        for (const QString& name : {u"fetchedAt"_s, u"cacheKey"_s}) {
            metadata.text(name);
        }
        return templatesFromJson(response.object(u"templates"_s));
    } catch (const JsonError& error) {
        throw PromptError::decodingError(error.localizedDescription());
    }
}

} // namespace ostrelle
