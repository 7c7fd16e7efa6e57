// SPDX-License-Identifier: GPL-3.0-or-later
#include "core/PromptLibrary.h"

#include "core/PromptLiteral.h"

#include <gtest/gtest.h>

#include <QCryptographicHash>

namespace ostrelle {

using namespace Qt::StringLiterals;

// The model gets these texts, and they were tried as they are. Update the digest when you change one.
TEST(PromptLibrary, HoldsEachTextAsItWasWritten) {
    QCryptographicHash digest(QCryptographicHash::Sha256);
    for (const PromptLiteral& literal : promptLiterals()) {
        digest.addData(literal.name.toUtf8() + '\n' + literal.text.toUtf8() + '\n');
    }
    EXPECT_EQ(promptLiterals().size(), 43U);
    EXPECT_EQ(digest.result().toHex(),
              QByteArray("1de08766551a8d731d3fed1628c0ca3d2414788ec5c93ff8400326318f05013c"));
}

TEST(PromptLibrary, FindsATextByItsNameOnly) {
    EXPECT_TRUE(promptLiteral(u"commonHead").startsWith(u"Return exactly one line"));
    EXPECT_TRUE(promptLiteral(u"codeReplacementsOffenseDefenseBatch").startsWith(QString(16, u' ') + u'\n'));
    for (const QStringView name : {u"", u"CommonHead", u"commonHead.txt", u"commonHea"}) {
        EXPECT_TRUE(promptLiteral(name).isNull()) << name.toUtf8().toStdString();
    }
}

TEST(PromptLibrary, HasRulesForEachSport) {
    const PromptLibrary library;
    for (const auto& row : rawValueRows<Sport>()) {
        const QString begin = row.value == Sport::football
                                  ? u"SPORT-SPECIFIC CONTEXT (American Football):\n"_s
                                  : u"SPORT-SPECIFIC CONTEXT (%1):\n"_s.arg(row.label);
        EXPECT_TRUE(library.sportRules(row.value).startsWith(begin)) << begin.toStdString();
    }
}

TEST(PromptLibrary, ChoosesFromTheTextsThatItIsGiven) {
    const PromptLibrary library({{u"gettyHead"_s, u"A"_s},
                                 {u"gettyIdentify"_s, u"B"_s},
                                 {u"gettyIdentifyOffenseDefense"_s, u"C"_s},
                                 {u"gettyBibRule"_s, u"D"_s},
                                 {u"gettyBody"_s, u"E"_s},
                                 {u"gettyExampleOffenseDefense"_s, u"F"_s},
                                 {u"simpleIdentify"_s, u"G"_s},
                                 {u"simpleBibRule"_s, u"never"_s}});
    const struct {
        CaptionStyle style;
        Sport sport;
        bool includeOffenseDefense;
        QString rules;
    } rows[] = {
        {CaptionStyle::gettySports, Sport::soccer, false, u"AB\nE"_s},
        {CaptionStyle::gettySports, Sport::soccer, true, u"AC\nEF"_s},
        {CaptionStyle::gettySports, Sport::crossCountry, false, u"AB\nDE"_s},
        {CaptionStyle::gettySports, Sport::trackAndField, true, u"AC\nDEF"_s},
        {CaptionStyle::simple, Sport::trackAndField, false, u"G"_s},
        {CaptionStyle::apSports, Sport::football, true, u"\n"_s},
    };
    for (const auto& row : rows) {
        EXPECT_EQ(library.styleRules(row.style, row.sport, row.includeOffenseDefense), row.rules);
    }
}

} // namespace ostrelle
