// SPDX-License-Identifier: GPL-3.0-or-later
#include "services/PromptResponse.h"

#include "services/PromptError.h"

#include <QJsonDocument>
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

[[noreturn]] void throwNot(const QString& type, const QString& name, const QString& path) {
    const QString field = path.isEmpty() ? name : path + u'.' + name;
    throw Error(u"The field \""_s + field + u"\" is not "_s + type + u'.');
}

} // namespace

QJsonObject parseObject(const QByteArray& json) {
    QJsonParseError error;
    const QJsonDocument document = QJsonDocument::fromJson(json, &error);
    if (error.error != QJsonParseError::NoError) {
        throw Error(u"This is not JSON: "_s + error.errorString() + u" at byte "_s +
                    QString::number(error.offset) + u'.');
    }
    if (!document.isObject()) {
        throw Error(u"This is not a JSON object."_s);
    }
    return document.object();
}

QString requiredText(const QJsonObject& object, const QString& name, const QString& path) {
    const QJsonValue value = object.value(name);
    if (!value.isString()) {
        throwNot(u"a text"_s, name, path);
    }
    return value.toString();
}

QJsonObject requiredObject(const QJsonObject& object, const QString& name, const QString& path) {
    const QJsonValue value = object.value(name);
    if (!value.isObject()) {
        throwNot(u"an object"_s, name, path);
    }
    return value.toObject();
}

QJsonObject toJson(const PromptTemplates& templates) {
    QJsonObject json;
    for (const TemplateField& field : templateFields) {
        json.insert(field.name, templates.*field.text);
    }
    return json;
}

PromptTemplates templatesFromJson(const QJsonObject& json, const QString& path) {
    PromptTemplates templates;
    for (const TemplateField& field : templateFields) {
        templates.*field.text = requiredText(json, field.name.toString(), path);
    }
    return templates;
}

PromptTemplates decodePromptResponse(const QByteArray& body) {
    try {
        const QJsonObject response = parseObject(body);
        for (const QString& name : {u"version"_s, u"style"_s, u"sport"_s}) {
            requiredText(response, name, {});
        }
        const QJsonObject metadata = requiredObject(response, u"metadata"_s, {});
        for (const QString& name : {u"fetchedAt"_s, u"cacheKey"_s}) {
            requiredText(metadata, name, u"metadata"_s);
        }
        return templatesFromJson(requiredObject(response, u"templates"_s, {}), u"templates"_s);
    } catch (const Error& error) {
        throw PromptError::decodingError(error.localizedDescription());
    }
}

} // namespace ostrelle
