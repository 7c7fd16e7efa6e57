// SPDX-License-Identifier: GPL-3.0-or-later
#include "pipeline/CaptionAcceptance.h"

#include "core/Text.h"

#include <QRegularExpression>
#include <QStringList>

namespace ostrelle {

using namespace Qt::StringLiterals;

QString firstNonEmptyLine(const QString& text) {
    static const QRegularExpression lineEnd(u"[\n\v\f\r\u0085\u2028\u2029]"_s);
    for (const QString& line : text.split(lineEnd)) {
        if (const QString trimmed = line.trimmed(); !trimmed.isEmpty()) {
            return trimmed;
        }
    }
    return text.trimmed();
}

bool hasPlaceholder(const QString& caption) {
    return caption.contains(u"City, State"_s, Qt::CaseInsensitive) ||
           caption.contains(u"City,State"_s, Qt::CaseInsensitive);
}

bool isRealCaption(const QString& caption) {
    constexpr qsizetype shortestCaption = 51;
    return characterCount(caption.trimmed()) >= shortestCaption;
}

bool isSameText(const QString& left, const QString& right) {
    return left.normalized(QString::NormalizationForm_C) == right.normalized(QString::NormalizationForm_C);
}

QString finalizeCaption(const QString& caption, const std::optional<QString>& rights,
                        const SettingsStore& settings) {
    if (!settings.appendCreditToCaption()) {
        return caption;
    }
    const QString credit = rights && !rights->isEmpty() ? *rights : settings.defaultRightsFallback();
    return credit.isEmpty() ? caption : caption + u' ' + credit;
}

} // namespace ostrelle
