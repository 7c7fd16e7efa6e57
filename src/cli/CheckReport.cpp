// SPDX-License-Identifier: GPL-3.0-or-later
#include "cli/CheckReport.h"

#include "cli/TerminalText.h"

#include <QJsonArray>
#include <QJsonDocument>
#include <QJsonObject>

namespace ostrelle {

using namespace Qt::StringLiterals;

namespace {

qsizetype codePoints(QStringView text) {
    return text.toUcs4().size();
}

QJsonObject findingJson(const Finding& finding, const QString& caption) {
    return {{u"kind"_s, rawValue(finding.kind)},
            {u"severity"_s, rawValue(severityOf(finding.kind))},
            {u"text"_s, finding.text},
            {u"from"_s, codePoints(QStringView(caption).first(finding.from))},
            {u"to"_s, codePoints(QStringView(caption).first(finding.to))}};
}

QString findingLine(const Finding& finding, const QString& caption) {
    const QString words = caption.sliced(finding.from, finding.to - finding.from).simplified();
    const bool isQuoted = !words.isEmpty() && words.size() <= 60 && !finding.text.contains(words);
    return u"\n  %1: %2%3"_s.arg(label(finding.kind), isQuoted ? u"“%1”: "_s.arg(words) : QString(),
                                 finding.text);
}

} // namespace

QString checkText(const CheckedFile& file) {
    if (!file.error.isEmpty()) {
        return u"%1: %2"_s.arg(printableName(file.file), file.error);
    }
    if (file.findings.isEmpty()) {
        return u"%1: nothing found"_s.arg(printableName(file.file));
    }
    QString text = printableName(file.file) + u':';
    if (!file.caption.trimmed().isEmpty()) {
        text += u"\n  "_s + file.caption.simplified();
    }
    for (const Finding& finding : file.findings) {
        text += findingLine(finding, file.caption);
    }
    return printable(text);
}

QString withoutRosterWords() {
    return u"There is no roster to use, so names and numbers are not checked. Name one with: --roster FILE"_s;
}

QString checkJson(const CheckedFile& file) {
    QJsonObject json{{u"file"_s, file.file}};
    if (!file.error.isEmpty()) {
        json.insert(u"error"_s, file.error);
    } else {
        QJsonArray findings;
        for (const Finding& finding : file.findings) {
            findings.append(findingJson(finding, file.caption));
        }
        json.insert(u"caption"_s, file.caption);
        json.insert(u"findings"_s, findings);
    }
    return QString::fromUtf8(QJsonDocument(json).toJson(QJsonDocument::Compact));
}

} // namespace ostrelle
