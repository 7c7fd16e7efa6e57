// SPDX-License-Identifier: GPL-3.0-or-later
#include "platform/DesktopColorScheme.h"

#include "platform/PrivateSession.h"

#include <QSignalSpy>
#include <memory>

namespace ostrelle {

using namespace Qt::StringLiterals;

namespace {

const QString portalPath = u"/org/freedesktop/portal/desktop"_s;
const QString appearance = u"org.freedesktop.appearance"_s;

QVariant inVariant(const QVariant& value) {
    return QVariant::fromValue(QDBusVariant(value));
}

class Portal : public FakeBusService {
public:
    /// Answers about the colours; without an answer about the contrast, as an older portal.
    explicit Portal(Answer answer, const Answer& contrastAnswer = nullptr)
        : FakeBusService(u"org.freedesktop.portal.Desktop"_s, portalPath,
                         answer ? byKey(answer, contrastAnswer) : nullptr) {}

    void tell(const QString& group, const QString& key, const QVariant& value) {
        QDBusMessage signal =
            QDBusMessage::createSignal(portalPath, u"org.freedesktop.portal.Settings"_s, u"SettingChanged"_s);
        signal.setArguments({group, key, value});
        bus.send(signal);
    }

private:
    static Answer byKey(const Answer& answer, const Answer& contrastAnswer) {
        return [=](const QDBusMessage& question) {
            const bool isContrast = question.arguments().value(1) == u"contrast"_s;
            const QDBusMessage unknown = question.createErrorReply(u"org.freedesktop.portal.Error.NotFound"_s,
                                                                   u"Requested setting not found"_s);
            return !isContrast ? answer(question) : contrastAnswer ? contrastAnswer(question) : unknown;
        };
    }
};

Portal::Answer answering(const QVariantList& values) {
    return [values](const QDBusMessage& question) { return question.createReply(values); };
}

Portal::Answer answeringNumber(uint number) {
    return answering({inVariant(inVariant(number))});
}

QDBusMessage refusal(const QDBusMessage& question) {
    return question.createErrorReply(u"org.freedesktop.portal.Error.NotFound"_s,
                                     u"Requested setting not found"_s);
}

class DesktopColorSchemeTest : public PrivateSessionTest {
protected:
    void expectNoPreference(std::chrono::milliseconds patience) {
        DesktopColorScheme scheme(patience);
        const QSignalSpy changed(&scheme, &DesktopColorScheme::changed);
        waitUntil([&] { return scheme.isSettled(); });
        EXPECT_EQ(scheme.preference(), ColorScheme::noPreference);
        EXPECT_EQ(changed.count(), 0);
    }
};

class WithBus : public DesktopColorSchemeTest {};

TEST_F(WithBus, AnAnswerThatIsNotOneOfTheTwoIsNoPreference) {
    const struct {
        const char* name;
        Portal::Answer answer;
        ColorScheme preference;
    } rows[] = {
        {"dark", answeringNumber(1), ColorScheme::dark},
        {"light", answeringNumber(2), ColorScheme::light},
        {"in one variant", answering({inVariant(1U)}), ColorScheme::dark},
        {"none", answeringNumber(0), ColorScheme::noPreference},
        {"unknown number", answeringNumber(3), ColorScheme::noPreference},
        {"text", answering({inVariant(inVariant(u"1"_s))}), ColorScheme::noPreference},
        {"signed", answering({inVariant(inVariant(1))}), ColorScheme::noPreference},
        {"list", answering({inVariant(QVariantList{1U})}), ColorScheme::noPreference},
        {"no value", answering({}), ColorScheme::noPreference},
        {"error", refusal, ColorScheme::noPreference},
    };
    for (const auto& row : rows) {
        SCOPED_TRACE(row.name);
        Portal portal(row.answer);
        DesktopColorScheme scheme;
        const QSignalSpy changed(&scheme, &DesktopColorScheme::changed);
        waitUntil([&] { return scheme.isSettled(); });
        EXPECT_EQ(scheme.preference(), row.preference);
        EXPECT_EQ(changed.count(), row.preference == ColorScheme::noPreference ? 0 : 1);
        ASSERT_EQ(portal.asked.size(), 2);
        EXPECT_EQ(portal.asked.first().member(), u"Read"_s);
        EXPECT_EQ(portal.asked.first().arguments(), (QVariantList{appearance, u"color-scheme"_s}));
    }
}

TEST_F(WithBus, HighContrastIsHeardOfBesideTheColours) {
    Portal portal(answeringNumber(2), answeringNumber(1));
    DesktopColorScheme scheme;
    waitUntil([&] { return scheme.isSettled(); });
    EXPECT_TRUE(scheme.wantsHighContrast());
    EXPECT_EQ(scheme.preference(), ColorScheme::light);
    portal.tell(appearance, u"contrast"_s, inVariant(0U));
    waitUntil([&] { return !scheme.wantsHighContrast(); });
}

TEST_F(WithBus, OnlyAnotherPreferenceIsAChange) {
    Portal portal(answeringNumber(1));
    DesktopColorScheme scheme;
    waitUntil([&] { return scheme.isSettled(); });
    QList<ColorScheme> seen;
    QObject::connect(&scheme, &DesktopColorScheme::changed, &scheme,
                     [&] { seen.append(scheme.preference()); });
    portal.tell(appearance, u"color-scheme"_s, inVariant(1U)); // unchanged
    portal.tell(appearance, u"contrast"_s, inVariant(2U));
    portal.tell(u"org.gnome.desktop.interface"_s, u"color-scheme"_s, inVariant(2U));
    portal.tell(appearance, u"color-scheme"_s, u"2"_s); // not in a variant
    portal.tell(appearance, u"color-scheme"_s, inVariant(2U));
    portal.tell(appearance, u"color-scheme"_s, inVariant(u"prefer-dark"_s));
    portal.tell(appearance, u"color-scheme"_s, inVariant(7U)); // still no preference
    portal.tell(appearance, u"color-scheme"_s, inVariant(inVariant(1U)));
    waitUntil([&] { return scheme.preference() == ColorScheme::dark && !seen.isEmpty(); });
    EXPECT_EQ(seen, (QList{ColorScheme::light, ColorScheme::noPreference, ColorScheme::dark}));
}

TEST_F(WithBus, APortalThatNeverAnswersIsNotWaitedForInVainAndItsChangesAreHeard) {
    Portal portal(nullptr);
    expectNoPreference(std::chrono::milliseconds(50));
    EXPECT_EQ(portal.asked.size(), 2);
    DesktopColorScheme scheme(std::chrono::milliseconds(200));
    waitUntil([&] { return portal.asked.size() == 4; });
    portal.tell(appearance, u"color-scheme"_s, inVariant(1U));
    waitUntil([&] { return scheme.isSettled(); });
    EXPECT_EQ(scheme.preference(), ColorScheme::dark) << "the missing answer does not undo it";
}

TEST_F(WithBus, ItMayGoBeforeTheAnswerComes) {
    Portal portal(answeringNumber(1));
    auto scheme = std::make_unique<DesktopColorScheme>();
    scheme.reset();
    DesktopColorScheme next;
    waitUntil([&] { return next.preference() == ColorScheme::dark; });
    auto asking = std::make_unique<DesktopColorScheme>();
    waitUntil([&] { return portal.asked.size() > 2; });
    asking.reset();
    DesktopColorScheme last;
    waitUntil([&] { return last.preference() == ColorScheme::dark; });
}

/// Runs in its own process, where Qt does not know the signal's types yet.
class FirstOnBus : public DesktopColorSchemeTest {};

TEST_F(FirstOnBus, APortalThatComesLaterIsHeard) {
    DesktopColorScheme scheme;
    waitUntil([&] { return scheme.isSettled(); });
    Portal portal(answeringNumber(1));
    portal.tell(appearance, u"color-scheme"_s, inVariant(1U));
    waitUntil([&] { return scheme.preference() == ColorScheme::dark; });
    EXPECT_TRUE(portal.asked.isEmpty());
}

class WithoutPortal : public DesktopColorSchemeTest {};

TEST_F(WithoutPortal, ThereIsNoPreference) {
    expectNoPreference(std::chrono::minutes(5)); // settles long before that
}

} // namespace

} // namespace ostrelle
