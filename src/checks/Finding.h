// SPDX-License-Identifier: GPL-3.0-or-later
#pragma once

#include "core/RawValue.h"

#include <QString>
#include <array>

namespace ostrelle {

/// What may be wrong with a caption.
enum class FindingKind {
    numberMismatch,    ///< a number beside a name that the roster has under another number, or not at all
    unknownName,       ///< a person's name that stands in neither roster nor facts
    wrongFact,         ///< a team, venue, place or date that contradicts the facts
    missingDate,       ///< the style wants a date, and the facts have one
    missingPlace,      ///< the same for the place
    placeholder,       ///< what should have been filled in
    empty,             ///< no caption
    cutOff,            ///< it breaks off
    severalLines,      ///< more than one line
    doubledCredit,     ///< the credit stands twice
    missingCredit,     ///< the facts have a credit
    sameAsAnother,     ///< the same words as the caption of another picture
    unusualCharacters, ///< characters that a wire does not take
};

template <>
inline std::span<const RawValueRow<FindingKind>> rawValueRows<FindingKind>() {
    using Kind = FindingKind;
    static constexpr std::array rows = {
        RawValueRow<Kind>{Kind::numberMismatch, u"numberMismatch", u"Number"},
        RawValueRow<Kind>{Kind::unknownName, u"unknownName", u"Name"},
        RawValueRow<Kind>{Kind::wrongFact, u"wrongFact", u"Fact"},
        RawValueRow<Kind>{Kind::missingDate, u"missingDate", u"Date"},
        RawValueRow<Kind>{Kind::missingPlace, u"missingPlace", u"Place"},
        RawValueRow<Kind>{Kind::placeholder, u"placeholder", u"Placeholder"},
        RawValueRow<Kind>{Kind::empty, u"empty", u"Empty"},
        RawValueRow<Kind>{Kind::cutOff, u"cutOff", u"Cut off"},
        RawValueRow<Kind>{Kind::severalLines, u"severalLines", u"Lines"},
        RawValueRow<Kind>{Kind::doubledCredit, u"doubledCredit", u"Credit"},
        RawValueRow<Kind>{Kind::missingCredit, u"missingCredit", u"Credit"},
        RawValueRow<Kind>{Kind::sameAsAnother, u"sameAsAnother", u"Repeated"},
        RawValueRow<Kind>{Kind::unusualCharacters, u"unusualCharacters", u"Characters"},
    };
    return rows;
}

/// How much a finding matters before the picture goes out.
enum class Severity {
    note,    ///< worth a look
    warning, ///< probably wrong
    error,   ///< wrong
};

template <>
inline std::span<const RawValueRow<Severity>> rawValueRows<Severity>() {
    static constexpr std::array rows = {
        RawValueRow<Severity>{Severity::note, u"note", u"Note"},
        RawValueRow<Severity>{Severity::warning, u"warning", u"Warning"},
        RawValueRow<Severity>{Severity::error, u"error", u"Error"},
    };
    return rows;
}

Severity severityOf(FindingKind kind);

/// One thing to look at in a caption.
struct Finding {
    FindingKind kind;
    QString text;       ///< a sentence for the user
    qsizetype from = 0; ///< the words in question, in UTF-16 code units; empty where something is missing
    qsizetype to = 0;

    bool operator==(const Finding&) const = default;
};

} // namespace ostrelle
