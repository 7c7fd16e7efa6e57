// SPDX-License-Identifier: GPL-3.0-or-later
#include "core/PromptLibrary.h"

#include "core/PromptLiteral.h"

#include <gtest/gtest.h>

#include <QCryptographicHash>

namespace ostrelle {

using namespace Qt::StringLiterals;

// The texts are what the model is told, and were tried as they are: whoever changes one says so here.
TEST(PromptLibrary, HoldsEachTextAsItWasWritten) {
    const struct {
        QStringView name;
        const char* sha256;
    } rows[] = {
        // clang-format off
        {u"apBibRule", "f14a9132bc7bed80a00a0b5030ffd1ac1b08bd2834f20db89954a396829a1565"},
        {u"apBody", "6a7bb28d64c18e6526a1f06bf7bb202e26990806cd949fcd4cef820a468c0297"},
        {u"apExampleOffenseDefense", "ab7cc5a6867bf43875feab97c78b3027b30e1e2e3765988bbd17248aee02479b"},
        {u"apHead", "6fa1ddc72d8a5d916dc1a65f01cb8407010796f487e8874000ea6bdfc4a9a42c"},
        {u"apIdentify", "a22f32c5c8bd7f8705716bb51bdb4b269f98c9403e36cc4c441976597ec0bee1"},
        {u"apIdentifyOffenseDefense", "0061e2e242c8425342abb0a0bb0aebdd59cd165c692bfebd418462a55b8c305a"},
        {u"audioContextOnly", "d1755a45df60e011fdba8d1177f6f719ee1c53132a1b56af8e2b65bcba501642"},
        {u"audioPrioritize", "2f3cadc4fe810a7747bcc06332458728dfc85841a7cc9b8f2722b17006fe5656"},
        {u"codeReplacementsHead", "e1748f4d9df8d7a71a211649537fbe194a80ff47a0abd4be8ed65fc7f28b2b1a"},
        {u"codeReplacementsOffenseDefense", "0078196b6383b92829d0444fa58d878b0d0804d3118aa9c5fe7d1ba414225089"},
        {u"codeReplacementsOffenseDefenseBatch", "478b7e53325b3354679123143f24a6ff0943c3360b8ac6026ce3147f5f493645"},
        {u"codeReplacementsTruncationNote", "4a0bdeac9ab64b08719101ad78d73febfe65e0bd7139642eecf192e49d3cbd52"},
        {u"commonData", "0f6568c84696d8da8f062464429946369dc667f8b359b105eb94253f55370ba5"},
        {u"commonHead", "9bfd5b52ee685b00386c51efd5e97f224da8576fa329c5d5345d80307e6342e5"},
        {u"fallbackAttempt", "818ca08836257e05a73ad2ef9b43a166f4e039e024b0dd6f4a8ebd429da069d0"},
        {u"fallbackOmit", "5b8767684391b2a483789d3d0e5108526e9c8be0f575c522e3b8a4b80050b8bb"},
        {u"gettyBibRule", "991c0e8a4a80e26aaca64d7b9b17854b269716fc106312c2ed3e10e6983b4ca1"},
        {u"gettyBody", "715eba2357eb569bfe1ddb3dbddee71b060f0f8a6b684efbd09e08177f2b38ff"},
        {u"gettyExampleOffenseDefense", "0549e3889285d6d0633fdeef42235b9f58a7054b812c49b92b691f820ed49ec7"},
        {u"gettyHead", "447198f4196cde1bbfada7dd5154fabfb454c16882607b7c67e7db0c89a5544c"},
        {u"gettyIdentify", "41f54203c77fc9a4f19ebb790d85973383136cb626ec53a1a1f7e0bc1d2db577"},
        {u"gettyIdentifyOffenseDefense", "ed3ce658195685bd1df3ea69462c08fb0fea5e22bdfa927473d039bb7a2bb824"},
        {u"imagnBibRule", "f558b3b1bfdf97dbdcfb3bf4ad6d686115c746217373d525024a632b5ca27729"},
        {u"imagnBody", "9385542058b0d60cf89f8ce2fffebb8f8f81f656cfc20ca30f73fc8c62269516"},
        {u"imagnExampleOffenseDefense", "d403e2285418dca2daaa8fbfd5fe8cc64103ded56738f141299929226959d7f3"},
        {u"imagnHead", "7c29d9a1867c97f49890f3c86a1876ece32ce8598ec14490d2ba3a39a17145ce"},
        {u"imagnIdentify", "e9dbddf4a40652898b715d00f807e8aef8c6bf89269884a400763471a6a3d24e"},
        {u"imagnIdentifyOffenseDefense", "aa629127bce09449129308d322df3d76c60c9ebde60f42b5bdcd0f9b98b25686"},
        {u"simpleBody", "351d380675057e424e5516e0b4fe7273e03b833c4a5d7ce735cca741d46e22d3"},
        {u"simpleExampleOffenseDefense", "1bd3a5310fef0d65ae0432d43a7abafab682464c01f1ca61c2a63eee90cadeb1"},
        {u"simpleHead", "4835f8d5b47e26e262de84e8f82e86e5ac6d897aee14208c2c56f50077fb64bc"},
        {u"simpleIdentify", "c460af2340a683d3fe2c82bbefa286dfe22e2dc84d1642ceabb3e74b4ed32dbd"},
        {u"simpleIdentifyOffenseDefense", "2c8c6fd7014430666d6aeb975ce5fddab4f8e7c5572dd585947ad0b8cdd02a6d"},
        {u"sportBaseball", "12614bbddc4864f6ac6a02eeb665845f76658671dc51019ce418db3206074cc8"},
        {u"sportBasketball", "df87a2bd9a6f541137c64ea67000a047f9cda2304d1111bb565998814c4a6c07"},
        {u"sportCrossCountry", "64c3c7363b8488d472a166fdf37d6818498a1bb17337a9767650b5bb19e368ca"},
        {u"sportFootball", "78ad756b83ad5bc8e174210e0be961921b8989d5880bdf6ffd24e6f0faf70a33"},
        {u"sportHorseRacing", "8567f8dee14314918899d7b2447e415db3e6161ff9ef3b8f3c74277279f4b381"},
        {u"sportLacrosse", "d23be8be191652139b45cd183221d5771eff5ce5a6f2ef9e0fef01701d59ea90"},
        {u"sportSoccer", "853d60d76328d32bd8ab1d3933f432256171a5f02bd85ed3cecfc7c153c919e8"},
        {u"sportSoftball", "363e55a9df6ea8e30aeca071396eba18f002d2862153a0e0dedefcc6b562e856"},
        {u"sportTrackAndField", "a708ddae5ff1da72f94bab69628555bf08e381cc61186189ae99ab1180bcf101"},
        {u"sportVolleyball", "28f34532d4e3c1c448b924d0e5943343fb99fad73e3504d25dae118f61607c15"},
        // clang-format on
    };
    ASSERT_EQ(promptLiterals().size(), std::size(rows));
    for (std::size_t index = 0; index < std::size(rows); ++index) {
        const PromptLiteral& literal = promptLiterals()[index];
        EXPECT_EQ(literal.name, rows[index].name);
        const QByteArray digest = QCryptographicHash::hash(literal.text.toUtf8(), QCryptographicHash::Sha256);
        EXPECT_EQ(digest.toHex(), QByteArray(rows[index].sha256)) << literal.name.toUtf8().toStdString();
    }
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
