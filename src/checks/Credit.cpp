// SPDX-License-Identifier: GPL-3.0-or-later
#include "checks/Credit.h"

#include <QRegularExpression>
#include <algorithm>

#include "checks/Words.h"

namespace ostrelle {

using namespace Qt::StringLiterals;

namespace {

constexpr auto noCase = QRegularExpression::CaseInsensitiveOption;

/// "Photo by", "(AP Photo/", "Mandatory Credit:": how a credit begins, whoever wrote it.
const QRegularExpression& creditBeginning() {
    static const QRegularExpression pattern(
        uR"(\((?:AP |Staff |Pool |File )?Photo\b|\bPhotos? (?:by|courtesy|credit)\b|\bPhoto:|\bMandatory Credit\b|\b(?:Photo )?Credit:|©|\(c\) ?\d{4}|\bCopyright\b|\bCourtesy (?:of|photo)\b)"_s,
        noCase);
    return pattern;
}

/// The places where the caption has the text, however its blanks and full stop are.
QList<TextSpan> placesOf(const QString& text, const QString& caption) {
    QStringList parts;
    QString words = text.simplified();
    while (words.endsWith(u'.') || words.endsWith(u' ')) {
        words.chop(1);
    }
    for (const QString& part : words.split(u' ', Qt::SkipEmptyParts)) {
        parts.append(QRegularExpression::escape(part));
    }
    QList<TextSpan> places;
    if (parts.isEmpty()) {
        return places;
    }
    auto matches = QRegularExpression(parts.join(uR"(\s+)"_s), noCase).globalMatch(caption);
    while (matches.hasNext()) {
        const QRegularExpressionMatch match = matches.next();
        places.append({.from = match.capturedStart(), .to = match.capturedEnd()});
    }
    return places;
}

QList<TextSpan> beginningsIn(const QString& caption) {
    QList<TextSpan> places;
    auto matches = creditBeginning().globalMatch(caption);
    while (matches.hasNext()) {
        const QRegularExpressionMatch match = matches.next();
        places.append({.from = match.capturedStart(), .to = match.capturedEnd()});
    }
    return places;
}

/// "LEXINGTON, KENTUCKY - JANUARY 03:" and "Jan 3, 2026; Lexington, KY, USA;".
qsizetype endOfFront(const QString& caption) {
    static const QRegularExpression dateline(uR"(^\s*[^a-z:;]{3,80}?[-–—][^a-z:;]{3,40}?:)"_s);
    static const QRegularExpression listed(uR"(^\s*[^;]{5,40};[^;]{2,80};)"_s);
    for (const QRegularExpression& pattern : {dateline, listed}) {
        const QRegularExpressionMatch match = pattern.match(caption);
        if (match.hasMatch()) {
            return match.capturedEnd();
        }
    }
    return 0;
}

bool holds(const QString& caption, const QString& credit) {
    return !placesOf(credit, caption).isEmpty() || foldedPhrase(caption).contains(foldedPhrase(credit));
}

} // namespace

TextSpan bodyOf(const CheckedCaption& checked) {
    const QString& caption = checked.caption;
    TextSpan body{.from = endOfFront(caption), .to = caption.size()};
    const auto endAt = [&body](const QList<TextSpan>& places) {
        for (const TextSpan& place : places) {
            if (place.from >= body.from) {
                body.to = std::min(body.to, place.from);
            }
        }
    };
    endAt(beginningsIn(caption));
    if (checked.rights) {
        endAt(placesOf(*checked.rights, caption));
    }
    return body;
}

QList<Finding> creditFindings(const CheckedCaption& checked) {
    const QString rights = checked.rights.value_or(QString()).trimmed();
    QList<TextSpan> places = placesOf(rights, checked.caption);
    if (places.size() < 2) {
        const QList<TextSpan> beginnings = beginningsIn(checked.caption);
        // The rights may have words of their own that begin a credit.
        const qsizetype expected = std::max<qsizetype>(1, beginningsIn(rights).size());
        places = beginnings.size() > expected ? beginnings : QList<TextSpan>();
    }
    if (places.size() >= 2) {
        return {{.kind = FindingKind::doubledCredit,
                 .text = u"The credit stands twice."_s,
                 .from = places.at(1).from,
                 .to = places.at(1).to}};
    }
    if (!rights.isEmpty() && !holds(checked.caption, rights)) {
        return {{.kind = FindingKind::missingCredit, .text = u"The credit is missing: %1"_s.arg(rights)}};
    }
    return {};
}

} // namespace ostrelle
