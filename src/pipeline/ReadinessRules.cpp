// SPDX-License-Identifier: GPL-3.0-or-later
#include "pipeline/ReadinessRules.h"

#include "core/Text.h"
#include "pipeline/ManualSelection.h"
#include "product/ApiKey.h"

namespace ostrelle {

using namespace Qt::StringLiterals;

namespace {

const QString keyEntry = u"OpenAI API Key"_s;
const QString rosterEntry = u"Code Replacements File"_s;
const QString watchFolderEntry = u"Watch Folder"_s;

QString folderEntry(SourceType source) {
    return source == SourceType::local ? watchFolderEntry : u"Destination Folder"_s;
}

Alert warning(const QString& title, const QString& text) {
    Alert alert;
    alert.title = title;
    alert.text = text;
    alert.buttons = QStringList{u"OK"_s};
    alert.style = Alert::Style::warning;
    return alert;
}

QString configurationText(const QString& entry) {
    if (entry == keyEntry) {
        return u"Please add your OpenAI API key in Settings before processing. You need your own API key to "
               "use Ostrelle Captions."_s;
    }
    if (entry == watchFolderEntry) {
        return u"Please select a Watch Folder before processing. You can also place a "
               "'code-replacements.txt' file in the watch folder."_s;
    }
    if (entry == folderEntry(SourceType::ftp) || entry == rosterEntry) {
        return u"Please select a %1 before processing."_s.arg(entry);
    }
    return u"Please configure %1 before processing."_s.arg(entry);
}

/// How many images there are, and what becomes of the captions that they have.
QString countWords(const CaptionCount& count, bool isOverwriting) {
    const QString images = u"%1 image%2"_s.arg(count.images).arg(plural(count.images));
    const qsizetype captioned = isOverwriting ? count.captioned : count.lasting;
    if (captioned == 0) {
        return images + u"; none has a caption yet."_s;
    }
    const QString have = captioned == 1 ? u"has a caption"_s : u"have captions"_s;
    return u"%1; %2 %3 that will be %4."_s.arg(images, QString::number(captioned), have,
                                               isOverwriting ? u"replaced"_s : u"left alone"_s);
}

void offerOnlyWithout(const CaptionCount& count, Alert& alert) {
    const qsizetype without = count.images - count.captioned;
    if (count.captioned > 0 && without > 0) {
        alert.buttons.append(u"Only the %1 Without"_s.arg(without));
    }
}

} // namespace

Readiness Readiness::of(const DefaultsStore& defaults, const SettingsStore& settings, bool folderHasRoster) {
    const bool isLocal = settings.sourceType() == SourceType::local;
    const bool hasFolder = workingFolder(settings).has_value();
    return {.source = settings.sourceType(),
            .hasKey = !apiKey(defaults).isEmpty(),
            .hasFolder = hasFolder,
            .hasCodeReplacements =
                settings.codeReplacementsFile() || (isLocal && hasFolder && folderHasRoster)};
}

QStringList missingConfiguration(const Readiness& readiness) {
    QStringList missing;
    if (!readiness.hasKey) {
        missing.append(keyEntry);
    }
    if (!readiness.hasFolder) {
        missing.append(folderEntry(readiness.source));
    }
    if (!readiness.hasCodeReplacements) {
        missing.append(rosterEntry);
    }
    return missing;
}

bool canProcess(const Readiness& readiness) {
    return missingConfiguration(readiness).isEmpty();
}

Alert configurationAlert(const QStringList& missing) {
    return warning(u"Configuration Required"_s,
                   missing.size() == 1 ? configurationText(missing.first())
                                       : u"Please configure the following before processing:\n• "_s +
                                             missing.join(u"\n• "_s));
}

std::optional<Alert> autoModeRefusal(const Readiness& readiness) {
    if (!readiness.hasKey) {
        return warning(
            u"OpenAI API Key Required"_s,
            u"Please add your OpenAI API key in Settings before enabling auto-processing. You need "
            "your own API key to use Ostrelle Captions."_s);
    }
    const QString folder = folderEntry(readiness.source);
    if (!readiness.hasFolder && !readiness.hasCodeReplacements) {
        const bool isLocal = readiness.source == SourceType::local;
        return warning(
            u"Configuration Required"_s,
            u"Please set both the %1 and Code Replacements File before enabling auto-processing.%2"_s.arg(
                folder, isLocal ? u" You can also place a 'code-replacements.txt' file in the watch "
                                  "folder."_s
                                : QString()));
    }
    if (!readiness.hasFolder || !readiness.hasCodeReplacements) {
        const QString entry = readiness.hasFolder ? rosterEntry : folder;
        return warning(entry + u" Required"_s,
                       u"Please select a %1 before enabling auto-processing."_s.arg(entry));
    }
    return std::nullopt;
}

std::optional<Alert> switchAutoMode(SettingsStore& settings, const Readiness& readiness, bool on) {
    std::optional<Alert> refusal = on ? autoModeRefusal(readiness) : std::nullopt;
    settings.setAutoMode(on && !refusal);
    return refusal;
}

Alert captionAllQuestion(const std::optional<CaptionCount>& count, bool isOverwriting) {
    Alert alert;
    alert.title = u"Caption All Local Images?"_s;
    alert.text = u"This will caption ALL images in the configured folder. This may take a while depending on "
                 "the number of files."_s;
    alert.buttons = QStringList{u"Cancel"_s, u"Caption All"_s};
    if (count) {
        alert.text += u"\n\n"_s + countWords(*count, isOverwriting);
        if (isOverwriting) {
            offerOnlyWithout(*count, alert);
        }
    }
    return alert;
}

std::optional<Alert> captionDroppedQuestion(const CaptionCount& count, bool isOverwriting) {
    if (!isOverwriting || count.captioned == 0) {
        return std::nullopt;
    }
    Alert alert;
    alert.title = count.images == 1 ? u"Caption This Image?"_s : u"Caption These Images?"_s;
    alert.text = countWords(count, isOverwriting);
    alert.buttons = QStringList{u"Cancel"_s, u"Caption All"_s};
    offerOnlyWithout(count, alert);
    return alert;
}

Alert downloadAllQuestion() {
    Alert alert;
    alert.title = u"Download and Caption All Files?"_s;
    alert.text = u"This will download and caption ALL image files from the FTP server. This may take a while "
                 "depending on the number of files."_s;
    alert.buttons = QStringList{u"Cancel"_s, u"Download All"_s};
    return alert;
}

} // namespace ostrelle
