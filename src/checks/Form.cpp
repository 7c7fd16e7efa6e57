// SPDX-License-Identifier: GPL-3.0-or-later
#include "checks/Form.h"

#include <QRegularExpression>
#include <QSet>

#include "checks/Credit.h"

namespace ostrelle {

using namespace Qt::StringLiterals;

namespace {

/// What prompts, presets and code replacements leave behind when they are not filled in.
const QRegularExpression& placeholderPattern() {
    static const QRegularExpression pattern(
        uR"(\bCity, ?State\b|\bStateAbbrev\b|\bDateText\b|\b(?:Player|Team|Event|Venue|First|Last) ?Name\b|\bFirstName\b|\bLastName\b|\bTeam [AB]\b(?! \w*team)|\bMONTH D\b|\bCITY, STATE\b|\[[A-Za-z][\w ,./'-]{0,40}\]|\{\{?[A-Za-z][\w ,./'-]{0,40}\}?\}|<[A-Za-z][\w ,./'-]{0,40}>|\bX{3,}\b|\bTK\b|\bTBD\b|_{3,}|\?{3,}|\\[A-Za-z0-9]{1,8}\\|=[A-Za-z0-9]{1,8}=)"_s);
    return pattern;
}

std::optional<Finding> placeholder(const QString& caption) {
    const QRegularExpressionMatch match = placeholderPattern().match(caption);
    if (!match.hasMatch()) {
        return std::nullopt;
    }
    return Finding{.kind = FindingKind::placeholder,
                   .text = u"“%1” was left in."_s.arg(match.captured()),
                   .from = match.capturedStart(),
                   .to = match.capturedEnd()};
}

bool hasOpenBracket(const QString& text) {
    return text.lastIndexOf(u'(') > text.lastIndexOf(u')');
}

/// A caption never ends with one of these.
bool isUnfinishedEnd(const QString& text) {
    static const QSet<QString> words = {
        u"a"_s,   u"an"_s,   u"the"_s,   u"of"_s,     u"in"_s,   u"at"_s,      u"during"_s,  u"and"_s,
        u"or"_s,  u"with"_s, u"to"_s,    u"for"_s,    u"from"_s, u"against"_s, u"by"_s,      u"as"_s,
        u"his"_s, u"her"_s,  u"their"_s, u"while"_s,  u"into"_s, u"past"_s,    u"between"_s, u"its"_s,
        u"is"_s,  u"are"_s,  u"after"_s, u"before"_s, u"vs"_s,   u"on"_s};
    static const QRegularExpression open(uR"([,;:(/#&–—-]\s*$)"_s);
    static const QRegularExpression lastWord(uR"(\b(\p{Ll}+)\s*$)"_s);
    static const QRegularExpression loneWord(uR"(, \p{Ll}+ing\s*$)"_s);
    static const QRegularExpression ordinal(
        uR"(\bthe (?:first|second|third|fourth|final|opening|closing)\s*$)"_s);
    return open.match(text).hasMatch() || ordinal.match(text).hasMatch() ||
           words.contains(lastWord.match(text).captured(1)) || loneWord.match(text).hasMatch() ||
           hasOpenBracket(text);
}

/// Whether a credit stands behind a sentence that is not finished.
bool isUnfinishedBeforeCredit(const CheckedCaption& checked) {
    const TextSpan body = bodyOf(checked);
    static const QRegularExpression lastWords(
        uR"(\b(?:the|a|an|of|to|and|during|against|try to|his|her|their|with|from|into)\s*$)"_s);
    return body.to < checked.caption.size() &&
           lastWords.match(checked.caption.sliced(body.from, body.to - body.from)).hasMatch();
}

std::optional<Finding> cutOff(const CheckedCaption& checked) {
    const QString text = checked.caption.trimmed();
    const Finding finding{.kind = FindingKind::cutOff,
                          .text = u"The caption breaks off."_s,
                          .from = checked.caption.lastIndexOf(text.right(1)),
                          .to = checked.caption.lastIndexOf(text.right(1)) + 1};
    return checked.isReplyCutOff || isUnfinishedEnd(text) || isUnfinishedBeforeCredit(checked)
               ? std::optional(finding)
               : std::nullopt;
}

bool isLineEnd(QChar character) {
    return character == u'\n' || character == u'\r' || character == u'\u2028' || character == u'\u2029' ||
           character == u'\v' || character == u'\f';
}

std::optional<Finding> severalLines(const QString& caption) {
    const QString text = caption.trimmed();
    const qsizetype start = caption.indexOf(text);
    for (qsizetype index = 0; index < text.size(); ++index) {
        if (isLineEnd(text.at(index))) {
            return Finding{.kind = FindingKind::severalLines,
                           .text = u"The caption has more than one line."_s,
                           .from = start + index,
                           .to = start + index + 1};
        }
    }
    return std::nullopt;
}

/// Letters of every script, digits, marks, punctuation and the signs of credits and prices are usual.
bool isUnusual(char32_t point) {
    if (point == U'\u00A9' || point == U'\u00AE' || point == U'\u2122' || point == U'\u00B0') {
        return false;
    }
    switch (QChar::category(point)) {
    case QChar::Other_Control:
    case QChar::Other_Format:
    case QChar::Other_Surrogate:
    case QChar::Other_PrivateUse:
    case QChar::Other_NotAssigned:
    case QChar::Symbol_Other:
    case QChar::Symbol_Modifier:
        return !(point < 0x80 && point >= 0x20) && point != U'´' && point != U'¨' &&
               !isLineEnd(QChar(static_cast<ushort>(point)));
    case QChar::Separator_Space:
        return point != U' ';
    default:
        return point == U'\uFFFD' || point == U'\uFE0F';
    }
}

QString nameOf(char32_t point) {
    const bool isVisible = QChar::category(point) == QChar::Symbol_Other;
    const QString code = u"U+%1"_s.arg(static_cast<uint>(point), 4, 16, QLatin1Char('0')).toUpper();
    return isVisible ? u"“%1” (%2)"_s.arg(QString::fromUcs4(&point, 1), code) : code;
}

std::optional<Finding> unusualCharacter(const QString& caption) {
    for (qsizetype index = 0; index < caption.size();) {
        const bool isPair = caption.at(index).isHighSurrogate() && index + 1 < caption.size() &&
                            caption.at(index + 1).isLowSurrogate();
        const char32_t point = isPair ? QChar::surrogateToUcs4(caption.at(index), caption.at(index + 1))
                                      : caption.at(index).unicode();
        const qsizetype size = isPair ? 2 : 1;
        if (isUnusual(point)) {
            return Finding{.kind = FindingKind::unusualCharacters,
                           .text = u"A wire may not take the character %1."_s.arg(nameOf(point)),
                           .from = index,
                           .to = index + size};
        }
        index += size;
    }
    return std::nullopt;
}

} // namespace

QList<Finding> formFindings(const CheckedCaption& checked) {
    if (checked.caption.trimmed().isEmpty()) {
        return {{.kind = FindingKind::empty, .text = u"There is no caption."_s}};
    }
    QList<Finding> findings;
    for (const std::optional<Finding>& finding :
         {placeholder(checked.caption), cutOff(checked), severalLines(checked.caption),
          unusualCharacter(checked.caption)}) {
        if (finding) {
            findings.append(*finding);
        }
    }
    return findings;
}

} // namespace ostrelle
