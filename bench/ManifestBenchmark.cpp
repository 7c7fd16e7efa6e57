// SPDX-License-Identifier: GPL-3.0-or-later
// The manifest of processed files at the size of several seasons.
#include "platform/ConsoleLog.h"
#include "platform/Files.h"
#include "platform/SystemClock.h"
#include "state/ManifestFile.h"
#include "state/ProcessedFilesManifest.h"

#include <benchmark/benchmark.h>
#include <time.h>

#include <QCoreApplication>
#include <QCoroTask>
#include <QTemporaryDir>
#include <algorithm>
#include <cstdio>
#include <exception>
#include <vector>

namespace ostrelle {
namespace {

using namespace Qt::StringLiterals;

constexpr int stored = 100'000;

ProcessedFileEntry entry(int number) {
    return {.filename = u"20241026_HER-FOX_%1.CR3"_s.arg(100'000 + number),
            .fileSize = 25'000'000 + number,
            .modificationDate = 750'000'000 + number / 7.0};
}

QList<ProcessedFileEntry> entries(int from, int count) {
    QList<ProcessedFileEntry> result;
    for (int number = from; number < from + count; ++number) {
        result.append(entry(number));
    }
    return result;
}

/// A folder with a manifest of `stored` entries.
class Folder {
public:
    Folder() { ManifestFile(path()).append(entries(0, stored)); }

    QString path() const { return m_folder.filePath(u"processed_files.json"_s); }
    QString picture(int number) const {
        const QString file = m_folder.filePath(u"%1.CR3"_s.arg(number));
        replaceFile(file, "sensor");
        return file;
    }

private:
    QTemporaryDir m_folder;
};

/// The manifest of a folder, and what it was made with.
struct Loaded {
    explicit Loaded(const Folder& folder) : manifest(folder.path(), clock, log, events) {}

    SystemClock clock;
    SilentLog log;
    AppEvents events;
    ProcessedFilesManifest manifest;
};

void load(benchmark::State& state) {
    const Folder folder;
    for ([[maybe_unused]] const auto& pass : state) {
        const Loaded loaded(folder);
        benchmark::DoNotOptimize(loaded.manifest.count());
    }
}
BENCHMARK(load)->Unit(benchmark::kMillisecond);

void isProcessedByEntry(benchmark::State& state) {
    const Folder folder;
    const Loaded loaded(folder);
    const ProcessedFileEntry wanted = entry(stored / 2);
    for ([[maybe_unused]] const auto& pass : state) {
        benchmark::DoNotOptimize(loaded.manifest.isProcessed(wanted));
    }
}
BENCHMARK(isProcessedByEntry);

void isProcessedByName(benchmark::State& state) {
    const Folder folder;
    const Loaded loaded(folder);
    const QString wanted = entry(stored / 2).filename;
    for ([[maybe_unused]] const auto& pass : state) {
        benchmark::DoNotOptimize(loaded.manifest.isProcessedByName(wanted));
    }
}
BENCHMARK(isProcessedByName);

/// The main thread's processor time in milliseconds, without the time that other programs take.
double threadTime() {
    timespec time{};
    ::clock_gettime(CLOCK_THREAD_CPUTIME_ID, &time);
    return static_cast<double>(time.tv_sec) * 1e3 + static_cast<double>(time.tv_nsec) / 1e6;
}

/// Runs the work and keeps its time if it was the longest so far: the window freezes for that long.
template <typename Work>
void timed(double& longest, const Work& work) {
    const double begin = threadTime();
    work();
    longest = std::max(longest, threadTime() - begin);
}

void markProcessed(benchmark::State& state) {
    const Folder folder;
    Loaded loaded(folder);
    const auto isReady = [](const QCoro::Task<>& task) { return task.isReady(); };
    int number = 0;
    double longest = 0;
    for ([[maybe_unused]] const auto& pass : state) {
        state.PauseTiming();
        std::vector<QString> pictures(static_cast<std::size_t>(state.range(0)));
        std::generate(pictures.begin(), pictures.end(), [&] { return folder.picture(number++); });
        state.ResumeTiming();
        std::vector<QCoro::Task<>> marks;
        for (const QString& picture : pictures) {
            timed(longest, [&] { marks.push_back(loaded.manifest.markProcessed(picture)); });
        }
        while (!std::all_of(marks.begin(), marks.end(), isReady)) {
            timed(longest, [] { QCoreApplication::processEvents(QEventLoop::WaitForMoreEvents); });
        }
    }
    state.counters["longest turn, ms"] = longest;
}
BENCHMARK(markProcessed)->Arg(1)->Arg(100)->Unit(benchmark::kMillisecond)->UseRealTime();

/// A save after another process has added ten entries.
void saveBesideAnotherProcess(benchmark::State& state) {
    const Folder folder;
    ManifestFile file(folder.path());
    ManifestFile other(folder.path());
    benchmark::DoNotOptimize(file.load());
    benchmark::DoNotOptimize(other.load());
    int number = stored;
    for ([[maybe_unused]] const auto& pass : state) {
        state.PauseTiming();
        other.append(entries(number, 10));
        number += 10;
        state.ResumeTiming();
        benchmark::DoNotOptimize(file.append({}));
    }
}
BENCHMARK(saveBesideAnotherProcess)->Unit(benchmark::kMillisecond)->UseRealTime();

} // namespace
} // namespace ostrelle

int main(int argc, char** argv) {
    QCoreApplication application(argc, argv);
    try {
        benchmark::Initialize(&argc, argv);
        benchmark::RunSpecifiedBenchmarks();
    } catch (const std::exception& error) {
        std::fprintf(stderr, "%s\n", error.what());
        return 1;
    }
}
