// SPDX-License-Identifier: GPL-3.0-or-later
#include "transfer/AutoModeRequirements.h"

#include "product/ApiKey.h"

namespace ostrelle {

using namespace Qt::StringLiterals;

std::optional<MissingRequirement> missingApiKey(const DefaultsStore& defaults) {
    if (!apiKey(defaults).isEmpty()) {
        return std::nullopt;
    }
    return MissingRequirement{.message = u"Auto mode: OpenAI API key required"_s,
                              .notification = u"OpenAI API Key"_s};
}

MissingRequirement missingLocalRoster() {
    return {.message = u"Auto mode: Code Replacements File required"_s,
            .logLine = u"Auto mode: No code replacements file found (manual or auto-discovered)"_s,
            .notification = u"Code Replacements File"_s};
}

std::optional<MissingRequirement> missingForRemote(const DefaultsStore& defaults,
                                                   const SettingsStore& settings) {
    if (auto key = missingApiKey(defaults)) {
        return key;
    }
    if (settings.ftpHost().isEmpty() || settings.ftpUsername().isEmpty() ||
        settings.ftpPassword().isEmpty()) {
        return MissingRequirement{.message = u"Auto mode: FTP configuration incomplete"_s,
                                  .logLine = u"Auto mode on but FTP configuration incomplete"_s};
    }
    if (!settings.codeReplacementsFile()) {
        return MissingRequirement{.message = u"Auto mode: Code Replacements File required"_s,
                                  .logLine = u"Auto mode: Code Replacements File required for FTP"_s,
                                  .notification = u"Code Replacements File"_s};
    }
    return std::nullopt;
}

bool isPasswordAwaited(const DefaultsStore& defaults, const SettingsStore& settings) {
    return !settings.isPasswordKnown() && !missingApiKey(defaults) && !settings.ftpHost().isEmpty() &&
           !settings.ftpUsername().isEmpty();
}

} // namespace ostrelle
