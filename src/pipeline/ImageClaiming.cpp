// SPDX-License-Identifier: GPL-3.0-or-later
#include "pipeline/ImageClaiming.h"

#include "core/OffMainThread.h"
#include "pipeline/FolderWork.h"

#include <chrono>
#include <utility>
#include <vector>

namespace ostrelle {

using namespace Qt::StringLiterals;

namespace {

/// How often to try again while other programs caption the images.
constexpr std::chrono::milliseconds poll{500};

HeldImage held(std::shared_ptr<const ImageClaim> claim) {
    const std::optional<QDateTime> lastDone = claim ? claim->lastDone() : std::nullopt;
    return {.claim = std::move(claim), .lastDone = lastDone};
}

std::optional<QList<HeldImage>>
heldAll(const std::optional<std::vector<std::shared_ptr<const ImageClaim>>>& claims) {
    if (!claims) {
        return std::nullopt;
    }
    QList<HeldImage> images;
    for (const auto& claim : *claims) {
        images.append(held(claim));
    }
    return images;
}

void logNotice(ImageClaims& claims, AnalyzerLog& log) {
    if (const QString notice = claims.takeNotice(); !notice.isEmpty()) {
        log.printAndAppend(u"[Analyzer] "_s + notice);
    }
}

} // namespace

QCoro::Task<HeldImage> claimImage(ImageClaims& claims, FolderThreads& threads, AnalyzerLog& log,
                                  QString file) {
    auto take = [claims = &claims, file] { return held(claims->tryClaim(file)); };
    const HeldImage image = co_await onThreadOf(threads, file, take);
    logNotice(claims, log);
    co_return image;
}

QCoro::Task<std::optional<QList<HeldImage>>> claimImages(AnalyzerParts parts, QStringList files) {
    bool isWaiting = false;
    while (!parts.turns.isRunEnding()) {
        auto take = [claims = &parts.claims, files] { return heldAll(claims->tryClaimAll(files)); };
        const auto claims = co_await onThreadOf(parts.threads, files.value(0), take);
        logNotice(parts.claims, parts.log);
        if (claims) {
            co_return *claims;
        }
        if (!std::exchange(isWaiting, true)) {
            parts.log.printAndAppend(
                u"[Analyzer] Another program is captioning images of this batch, waiting for it"_s);
            parts.progress.showMessage(u"Waiting for another program that captions these images..."_s);
        }
        co_await parts.clock.sleep(poll);
    }
    co_return std::nullopt;
}

QCoro::Task<> recordCaptioned(HeldImage image, QDateTime time) {
    auto record = [claim = image.claim, time] { claim->recordDone(time); };
    co_await offMainThread(record);
}

} // namespace ostrelle
