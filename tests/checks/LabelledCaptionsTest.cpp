// SPDX-License-Identifier: GPL-3.0-or-later
// The labelled captions beside this file, one JSON object a line: how often each finding is right, and how
// many of what is wrong are found. OSTRELLE_CAPTIONS names another file.
#include <gtest/gtest.h>

#include <QFile>
#include <QJsonArray>
#include <QJsonDocument>
#include <QJsonObject>
#include <QMap>
#include <QSet>
#include <cstdio>

#include "checks/CaptionCheck.h"

namespace ostrelle {

using namespace Qt::StringLiterals;

namespace {

struct LabelledCaption {
    QString id;
    CheckedCaption checked;
    QList<RosterEntry> roster;
    QSet<QString> expected;
};

std::optional<QString> textIn(const QJsonObject& facts, const QString& key) {
    const QString text = facts.value(key).toString().trimmed();
    return text.isEmpty() ? std::nullopt : std::optional(text);
}

QStringList textsIn(const QJsonValue& value) {
    QStringList texts;
    for (const QJsonValue& text : value.toArray()) {
        texts.append(text.toString());
    }
    return texts;
}

LabelledCaption labelled(const QJsonObject& line) {
    const QJsonObject facts = line.value(u"facts").toObject();
    LabelledCaption caption{.id = line.value(u"id").toString(), .checked = {}, .roster = {}, .expected = {}};
    caption.checked = {.caption = line.value(u"caption").toString(),
                       .style = fromRawValue<CaptionStyle>(line.value(u"style").toString()).value(),
                       .context = {.city = textIn(facts, u"city"_s),
                                   .state = textIn(facts, u"state"_s),
                                   .country = textIn(facts, u"country"_s),
                                   .location = textIn(facts, u"location"_s),
                                   .dateISO8601 = textIn(facts, u"date"_s),
                                   .event = textIn(facts, u"event"_s),
                                   .keywords = textsIn(facts.value(u"keywords"))},
                       .rights = textIn(facts, u"rights"_s),
                       .creator = textIn(facts, u"creator"_s),
                       .days = daysOf(facts.value(u"date").toString(), std::nullopt),
                       .isReplyCutOff = line.value(u"isReplyCutOff").toBool()};
    for (const QString& entry : textsIn(line.value(u"roster"))) {
        caption.roster.append({.code = entry.section(u'\t', 0, 0), .name = entry.section(u'\t', 1)});
    }
    const QStringList expected = textsIn(line.value(u"expect"));
    caption.expected = {expected.begin(), expected.end()};
    return caption;
}

QList<LabelledCaption> labelledCaptions() {
    const QString other = qEnvironmentVariable("OSTRELLE_CAPTIONS");
    QFile file(other.isEmpty() ? QStringLiteral(OSTRELLE_LABELLED_CAPTIONS) : other);
    EXPECT_TRUE(file.open(QIODevice::ReadOnly));
    QList<LabelledCaption> captions;
    while (!file.atEnd()) {
        const QJsonDocument line = QJsonDocument::fromJson(file.readLine());
        EXPECT_TRUE(line.isObject());
        captions.append(labelled(line.object()));
    }
    return captions;
}

/// For one kind: findings that are right, findings that are not, and what was not found.
struct Score {
    int right = 0;
    int wrong = 0;
    int missed = 0;

    double precision() const { return right + wrong == 0 ? 1 : double(right) / (right + wrong); }
    double recall() const { return right + missed == 0 ? 1 : double(right) / (right + missed); }
};

} // namespace

TEST(LabelledCaptions, AreJudgedAsADeskWouldJudgeThem) {
    QMap<QString, Score> scores;
    int count = 0;
    for (const LabelledCaption& caption : labelledCaptions()) {
        ++count;
        const QList<Finding> findings = checkCaption(caption.checked, RosterNames(caption.roster));
        QSet<QString> found;
        QStringList texts;
        for (const Finding& finding : findings) {
            found.insert(rawValue(finding.kind));
            texts.append(u"%1 [%2] %3"_s.arg(
                rawValue(finding.kind), caption.checked.caption.mid(finding.from, finding.to - finding.from),
                finding.text));
        }
        for (const QString& kind : found + caption.expected) {
            Score& score = scores[kind];
            const bool isFound = found.contains(kind);
            (isFound && caption.expected.contains(kind) ? score.right
             : isFound                                  ? score.wrong
                                                        : score.missed) += 1;
        }
        if (found != caption.expected) {
            const QStringList expected = caption.expected.values();
            std::printf("%s: %s\n  expected: %s\n  found: %s\n", qUtf8Printable(caption.id),
                        qUtf8Printable(caption.checked.caption), qUtf8Printable(expected.join(u", ")),
                        qUtf8Printable(texts.join(u"\n         ")));
        }
    }
    std::printf("%d captions\n%-18s %6s %6s %7s %10s %7s\n", count, "kind", "right", "wrong", "missed",
                "precision", "recall");
    for (auto score = scores.cbegin(); score != scores.cend(); ++score) {
        std::printf("%-18s %6d %6d %7d %10.3f %7.3f\n", qUtf8Printable(score.key()), score->right,
                    score->wrong, score->missed, score->precision(), score->recall());
        EXPECT_GE(score->precision(), 0.95) << score.key().toStdString();
        EXPECT_GE(score->recall(), 0.85) << score.key().toStdString();
    }
    EXPECT_GE(count, 300);
}

} // namespace ostrelle
