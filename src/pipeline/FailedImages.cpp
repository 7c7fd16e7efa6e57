// SPDX-License-Identifier: GPL-3.0-or-later
#include "pipeline/FailedImages.h"

#include "core/Attempt.h"
#include "pipeline/ImageFailure.h"
#include "pipeline/ServiceRefusals.h"
#include "services/OpenAIError.h"
#include "services/TransportError.h"

#include <QFileInfo>
#include <algorithm>

namespace ostrelle {

using namespace Qt::StringLiterals;
using Remedy = FailedGroup::Remedy;

namespace {

/// Without what differs from image to image, so that a cause that many share is told once.
FailedGroup groupOf(const ImageOutcome& image) {
    if (const auto refusal = serviceRefusal(image.cause)) {
        return {.reason = refusal->words,
                .remedy = refusal->isRateLimit ? Remedy::tryAgain : Remedy::enterKey,
                .files = {}};
    }
    const auto service = failureAs<OpenAIError>(image.cause);
    if (service && service->kind() == OpenAIError::Case::http) {
        return {.reason = u"OpenAI answered with an error (HTTP %1)."_s.arg(service->statusCode()),
                .files = {}};
    }
    if (failureAs<TransportError>(image.cause)) {
        return {.reason = u"OpenAI could not be reached, or the connection broke."_s, .files = {}};
    }
    const auto kind = image.cause ? classifyFailure(image.cause, image.file).kind : ImageFailure::Kind();
    if (kind == ImageFailure::Kind::missingKey) {
        return {.reason = u"No API key is set."_s, .remedy = Remedy::enterKey, .files = {}};
    }
    if (kind == ImageFailure::Kind::permission || image.kind == OutcomeKind::unwritable) {
        return {.reason = u"No caption can be written in “%1”."_s.arg(
                    QFileInfo(QFileInfo(image.file).path()).fileName()),
                .remedy = Remedy::openFolder,
                .files = {}};
    }
    return {.reason = image.reason.isEmpty() ? u"The reason is in the log."_s : image.reason, .files = {}};
}

} // namespace

QString sharedReason(const ImageOutcome& image) {
    return groupOf(image).reason;
}

void FailedImages::take(const ImageOutcome& image) {
    if (image.kind == OutcomeKind::notBegun) {
        return;
    }
    const bool wasHere = remove(image.file);
    if (isFailure(image.kind)) {
        FailedGroup group = groupOf(image);
        const auto isSame = [&group](const FailedGroup& other) { return other.reason == group.reason; };
        const auto found = std::find_if(m_groups.begin(), m_groups.end(), isSame);
        group.files.append(image.file);
        found == m_groups.end() ? m_groups.append(group) : found->files.append(image.file);
    } else if (!wasHere) {
        return;
    }
    m_groups.removeIf([](const FailedGroup& group) { return group.files.isEmpty(); });
    Q_EMIT changed();
}

void FailedImages::letGo(const QString& reason) {
    const auto isMeant = [&reason](const FailedGroup& group) { return group.reason == reason; };
    if (m_groups.removeIf(isMeant) > 0) {
        Q_EMIT changed();
    }
}

bool FailedImages::remove(const QString& file) {
    return std::any_of(m_groups.begin(), m_groups.end(),
                       [&file](FailedGroup& group) { return group.files.removeOne(file); });
}

} // namespace ostrelle
