// SPDX-License-Identifier: GPL-3.0-or-later
#include "cli/KeyCommand.h"

#include "cli/ExitStatus.h"
#include "cli/SecretInput.h"
#include "platform/DefaultsFile.h"
#include "platform/TaggedJson.h"
#include "product/ApiKey.h"

#include <unistd.h>

namespace ostrelle {

using namespace Qt::StringLiterals;

namespace {

/// Makes the change in the file at once. False when that fails; prints why.
bool changeKey(const QString& defaultsPath, const QJsonValue& key, PlainLog& errors) {
    DefaultsFile file(defaultsPath);
    QString failure;
    try {
        file.apply({{apiKeyName, key}});
    } catch (const FileError& error) {
        failure = u"ostrelle-caption: "_s + error.localizedDescription();
    }
    for (const QString& line : {file.takeNotice(), failure}) {
        if (!line.isEmpty()) {
            errors.print(line);
        }
    }
    return failure.isEmpty();
}

} // namespace

int storeKey(const QString& defaultsPath, std::FILE* input, PlainLog& output, PlainLog& errors) {
    const bool isTerminal = ::isatty(::fileno(input)) == 1;
    if (isTerminal) {
        output.print(u"API key (it is not shown):"_s);
    }
    const QString key = readSecret(input).trimmed();
    if (key.isEmpty()) {
        errors.print(
            u"ostrelle-caption: No key was given, and the stored one is as it was. To forget it: ostrelle-caption key --clear"_s);
        return ExitStatus::usageOrConfiguration;
    }
    if (!changeKey(defaultsPath, taggedValue(key), errors)) {
        errors.print(u"ostrelle-caption: The key could not be stored in %1."_s.arg(defaultsPath));
        return ExitStatus::fileFailed;
    }
    output.print(u"The API key is stored."_s);
    return ExitStatus::success;
}

int clearKey(const QString& defaultsPath, PlainLog& output, PlainLog& errors) {
    if (!changeKey(defaultsPath, QJsonValue::Null, errors)) {
        errors.print(u"ostrelle-caption: The key could not be removed from %1."_s.arg(defaultsPath));
        return ExitStatus::fileFailed;
    }
    output.print(u"No API key is stored now."_s);
    return ExitStatus::success;
}

} // namespace ostrelle
