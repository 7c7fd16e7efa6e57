// SPDX-License-Identifier: GPL-3.0-or-later
#include "pipeline/ServiceRefusals.h"

#include "core/Attempt.h"
#include "services/OpenAIError.h"

#include <utility>

namespace ostrelle {

using namespace Qt::StringLiterals;

std::optional<ServiceRefusals::Cause> serviceRefusal(const std::exception_ptr& failure) {
    const auto error = failureAs<OpenAIError>(failure);
    if (!error || error->kind() != OpenAIError::Case::http) {
        return std::nullopt;
    }
    if (error->body().contains("insufficient_quota"_L1)) {
        return ServiceRefusals::Cause{.words = u"The quota of the OpenAI account is spent."_s,
                                      .isRateLimit = true};
    }
    switch (error->statusCode()) {
    case 401:
    case 403:
        return ServiceRefusals::Cause{
            .words = u"OpenAI refused the API key (HTTP %1). Enter a valid one."_s.arg(error->statusCode())};
    case 429:
        return ServiceRefusals::Cause{.words = u"OpenAI takes no more requests for now (HTTP 429)."_s,
                                      .isRateLimit = true};
    default:
        return std::nullopt;
    }
}

void ServiceRefusals::succeeded() {
    m_names.clear();
    m_inARow = 0;
    m_isReported = false;
}

std::optional<ServiceRefusals::Cause>
ServiceRefusals::failed(const QString& name, const std::exception_ptr& failure, const QString& key) {
    const std::optional<Cause> cause = serviceRefusal(failure);
    if (key != std::exchange(m_key, key)) {
        succeeded();
    }
    if (!cause) {
        return std::nullopt; // such as a damaged picture, which says nothing about the service
    }
    if (!m_names.contains(name)) {
        m_names.append(name);
    }
    return ++m_inARow < patience ? std::nullopt : cause;
}

bool ServiceRefusals::takeIsNew() {
    return !std::exchange(m_isReported, true);
}

} // namespace ostrelle
