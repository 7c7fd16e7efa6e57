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

/// How long to wait for other programs that caption the images, before the next look.
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

void sayNotice(const AnalyzerParts& parts) {
    if (const QString notice = parts.claims.takeNotice(); !notice.isEmpty()) {
        parts.log.printAndAppend(u"[Analyzer] "_s + notice);
    }
}

} // namespace

QCoro::Task<HeldImage> claimImage(AnalyzerParts parts, QString file) {
    auto take = [claims = &parts.claims, file] { return held(claims->tryClaim(file)); };
    const HeldImage image = co_await onThreadOf(parts.threads, file, take);
    sayNotice(parts);
    co_return image;
}

QCoro::Task<std::optional<QList<HeldImage>>> claimImages(AnalyzerParts parts, QStringList files) {
    bool isWaiting = false;
    while (!parts.turns.isClosed()) {
        auto take = [claims = &parts.claims, files] { return heldAll(claims->tryClaimAll(files)); };
        const auto claims = co_await onThreadOf(parts.threads, files.value(0), take);
        sayNotice(parts);
        if (claims) {
            co_return *claims;
        }
        if (!std::exchange(isWaiting, true)) {
            parts.log.printAndAppend(
                u"[Analyzer] Another program is captioning images of this batch, waiting for it"_s);
            parts.status.setLastMessage(u"Waiting for another program that captions these images..."_s);
        }
        co_await parts.clock.sleep(poll);
    }
    co_return std::nullopt;
}

QCoro::Task<> recordCaptioned(AnalyzerParts parts, HeldImage image) {
    auto record = [claim = image.claim, now = parts.clock.now()] { claim->recordDone(now); };
    co_await offMainThread(record);
}

} // namespace ostrelle
