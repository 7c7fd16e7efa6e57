// SPDX-License-Identifier: GPL-3.0-or-later
// The main thread must not look at, open or change anything in a folder of images: a share that hangs would
// freeze the window. The functions at the end of this file replace the C library's and record the calls.
#include "pipeline/PipelineFixture.h"
#include "transfer/RosterWatch.h"

#include <dlfcn.h>

#include <cstdarg>
#include <cstring>
#include <thread>

namespace {

const std::thread::id mainThread = std::this_thread::get_id();
const char* watchedFolder = nullptr; // set while the main thread must not touch it
QStringList touches;

void note(const char* call, const char* path) {
    if (watchedFolder != nullptr && std::this_thread::get_id() == mainThread && path != nullptr &&
        std::strncmp(path, watchedFolder, std::strlen(watchedFolder)) == 0) {
        touches.append(QStringLiteral("%1 %2").arg(QLatin1StringView(call), QString::fromUtf8(path)));
    }
}

} // namespace

namespace ostrelle {

using namespace Qt::StringLiterals;

namespace {

/// The whole program below its windows, over the folder "shoot".
class MainThreadTest : public PipelineTest {
protected:
    MainThreadTest() {
        write(u"shoot/code-replacements.txt"_s, "12\tSam Abel\n");
        settings.setCodeReplacementsFile(std::nullopt);
        settings.setIngestFolder(shoot);
        await(settings.pathsSettled());
    }

    /// A RAW image without a sidecar, one with a truncated sidecar, and a JPEG.
    QStringList images() const {
        write(u"shoot/IMG_3.xmp"_s, "<x:xmpmeta");
        return {rawImage(u"shoot/IMG_1.DNG"_s), jpegImage(u"shoot/IMG_2.JPG"_s),
                rawImage(u"shoot/IMG_3.DNG"_s)};
    }
    /// What the main thread touches until the condition holds.
    QStringList touchesUntil(const std::function<bool()>& condition) {
        const QByteArray path = QFile::encodeName(shoot);
        touches.clear();
        watchedFolder = path.constData();
        driveUntil(condition, std::chrono::seconds(1));
        watchedFolder = nullptr;
        return touches;
    }

    const QString shoot = folderWith(u"shoot"_s);
};

} // namespace

TEST_F(MainThreadTest, TouchesNothingInARunOverAFolderOrASelection) {
    const QStringList files = images();
    const auto run = analyzer.recaptionFolder(FolderImages::onlyNew);
    EXPECT_EQ(touchesUntil([&] { return run.isReady(); }), QStringList());
    EXPECT_EQ(reports.size(), 3);

    const auto selected = analyzer.captionSelection(
        files + QStringList{shoot + u"/IMG_1.xmp"_s, shoot + u"/IMG_3.xmp"_s}, {}, workspace);
    EXPECT_EQ(touchesUntil([&] { return selected.isReady(); }), QStringList());
    EXPECT_EQ(reports.size(), 6);
}

TEST_F(MainThreadTest, ATouchIsSeen) {
    const auto looks = [this] { return !QFile::exists(shoot + u"/IMG_1.xmp"_s); };
    const auto opens = [this] {
        return QFile(shoot + u"/code-replacements.txt"_s).open(QIODevice::ReadOnly);
    };
    EXPECT_FALSE(touchesUntil(looks).isEmpty());
    EXPECT_TRUE(touchesUntil(opens).value(0).startsWith(u"open"));
}

TEST_F(MainThreadTest, TouchesNothingInAutoMode) {
    images();
    RosterWatch watch(settings, threads, clock);
    settings.setAutoMode(true);
    program.autoMode.observeAutoModeSettings();
    EXPECT_EQ(touchesUntil([this] { return status.processed() == 2 && status.failed() > 0; }), QStringList());
    program.autoMode.updateAutoMode(false, SourceType::local, std::nullopt);
    const QCoro::Task<> finished = program.scan.finished();
    EXPECT_EQ(touchesUntil([&] { return finished.isReady(); }), QStringList());
}

} // namespace ostrelle

namespace {

template <typename Result, typename... Arguments>
Result call(const char* name, const char* path, Arguments... arguments) {
    note(name, path);
    return reinterpret_cast<Result (*)(Arguments...)>(::dlsym(RTLD_NEXT, name))(arguments...);
}

} // namespace

extern "C" {

// Defined under our own names, as the headers declare these functions in more than one way.
#define OSTRELLE_OPEN(name)                                                                                  \
    int test_##name(const char* path, int flags, ...) __asm__(#name);                                        \
    int test_##name(const char* path, int flags, ...) {                                                      \
        va_list list;                                                                                        \
        va_start(list, flags);                                                                               \
        const mode_t mode = va_arg(list, mode_t);                                                            \
        va_end(list);                                                                                        \
        return call<int>(#name, path, path, flags, mode);                                                    \
    }
OSTRELLE_OPEN(open)
OSTRELLE_OPEN(open64)

#define OSTRELLE_TWO(name)                                                                                   \
    int test_##name(const char* path, void* other) __asm__(#name);                                           \
    int test_##name(const char* path, void* other) {                                                         \
        return call<int>(#name, path, path, other);                                                          \
    }
OSTRELLE_TWO(stat)
OSTRELLE_TWO(stat64)
OSTRELLE_TWO(lstat)
OSTRELLE_TWO(lstat64)
OSTRELLE_TWO(rename)

int test_statx(int folder, const char* path, int flags, unsigned mask, void* result) __asm__("statx");
int test_statx(int folder, const char* path, int flags, unsigned mask, void* result) {
    return call<int>("statx", path, folder, path, flags, mask, result);
}

int test_access(const char* path, int mode) __asm__("access");
int test_access(const char* path, int mode) {
    return call<int>("access", path, path, mode);
}

void* test_opendir(const char* path) __asm__("opendir");
void* test_opendir(const char* path) {
    return call<void*>("opendir", path, path);
}

int test_unlink(const char* path) __asm__("unlink");
int test_unlink(const char* path) {
    return call<int>("unlink", path, path);
}

} // extern "C"
