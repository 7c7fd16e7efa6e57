// SPDX-License-Identifier: GPL-3.0-or-later
// Reading a roster and joining prompts around it.
#include "core/Error.h"
#include "core/PromptLibrary.h"
#include "pipeline/PromptBuilder.h"
#include "platform/Files.h"

#include <benchmark/benchmark.h>

#include <QTemporaryDir>

namespace ostrelle {
namespace {

using namespace Qt::StringLiterals;

enum class Script { latin, mixed, emoji, oneLineOfMarks };

QByteArray entry(int number, Script script) {
    const QByteArray key = QByteArray::number(number) + '\t';
    switch (script) {
    case Script::latin:
        return key + "Lexington Falcons linebacker Sam Abel-M\xC3\xBCller\r\n";
    case Script::mixed: // every fourth name in letters with combining marks
        return key + (number % 4 == 0 ? "Jose\xCC\x81 Nun\xCC\x83"
                                        "ez\n"
                                      : "Sam Abel\n");
    case Script::emoji:
        return key + "\xF0\x9F\x91\x8D\xF0\x9F\x8F\xBD\n";
    case Script::oneLineOfMarks:
        break;
    }
    return "e\xCC\x81";
}

QByteArray roster(qsizetype size, Script script) {
    QByteArray bytes;
    for (int number = 0; bytes.size() < size; ++number) {
        bytes += entry(number, script);
    }
    return bytes;
}

void readRoster(benchmark::State& state, Script script) {
    const QTemporaryDir folder;
    const QString path = folder.filePath(u"roster.txt"_s);
    replaceFile(path, roster(qsizetype{5} * 1024 * 1024, script));
    for (auto step : state) {
        benchmark::DoNotOptimize(readCodeReplacements(path));
    }
}
BENCHMARK_CAPTURE(readRoster, latin, Script::latin)->Unit(benchmark::kMillisecond);
BENCHMARK_CAPTURE(readRoster, mixed, Script::mixed)->Unit(benchmark::kMillisecond);
BENCHMARK_CAPTURE(readRoster, emoji, Script::emoji)->Unit(benchmark::kMillisecond);
BENCHMARK_CAPTURE(readRoster, oneLineOfMarks, Script::oneLineOfMarks)->Unit(benchmark::kMillisecond);

PromptQuery longestQuery() {
    return {.style = CaptionStyle::apSports, .sport = Sport::football, .includeOffenseDefense = true};
}

PromptTemplates templates() {
    const PromptLibrary library;
    return {.commonRules = library.commonHead() + library.commonData(),
            .sportInstructions = library.sportRules(Sport::football),
            .styleRules = library.styleRules(CaptionStyle::apSports, Sport::football, true),
            .fallbackInstructions = library.fallbackRules(FallbackBehavior::attemptCaption),
            .audioInstructions = library.audioRules(true),
            .offenseDefenseInstructions = library.offenseDefenseExample(CaptionStyle::apSports)};
}

void singlePrompt(benchmark::State& state) {
    const CodeReplacements replacements = parseCodeReplacements(roster(30'000, Script::latin));
    const PromptTemplates rules = templates();
    CaptionFacts facts;
    facts.context.event = u"Herons vs. Foxes"_s;
    facts.context.dateISO8601 = u"2025-10-25T19:30:00-04:00"_s;
    for (auto step : state) {
        benchmark::DoNotOptimize(buildPrompt(facts, longestQuery(), rules, replacements, QTimeZone::utc()));
    }
}
BENCHMARK(singlePrompt)->Unit(benchmark::kMicrosecond);

void batchPrompt(benchmark::State& state) {
    const CodeReplacements replacements = parseCodeReplacements(roster(30'000, Script::latin));
    for (auto step : state) {
        benchmark::DoNotOptimize(buildBatchPrompt(longestQuery(), replacements));
    }
}
BENCHMARK(batchPrompt)->Unit(benchmark::kMicrosecond);

} // namespace
} // namespace ostrelle

BENCHMARK_MAIN();
