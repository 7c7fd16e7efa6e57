// SPDX-License-Identifier: GPL-3.0-or-later
#include "pipeline/ImageFailure.h"

#include "core/Attempt.h"
#include "metadata/facts/XMPError.h"
#include "metadata/sidecar/SidecarPath.h"
#include "pipeline/AnalyzerError.h"
#include "services/OpenAIError.h"

#include <QFileInfo>
#include <QStringList>
#include <algorithm>

namespace ostrelle {

using namespace Qt::StringLiterals;

namespace {

/// What the type of a failure reveals.
struct FailureFacts {
    QString words;
    bool isRateLimit = false;
    bool isMissingKey = false;
    bool isUnwrittenMetadata = false;
    bool isOfService = false; ///< its words about permissions do not mean files
};

FailureFacts factsOf(const std::exception_ptr& failure) {
    constexpr int tooManyRequests = 429;
    try {
        std::rethrow_exception(failure);
    } catch (const OpenAIError& error) {
        return {.words = error.localizedDescription(),
                .isRateLimit =
                    error.kind() == OpenAIError::Case::http && error.statusCode() == tooManyRequests,
                .isMissingKey = error.kind() == OpenAIError::Case::missingAPIKey,
                .isOfService = true};
    } catch (const AnalyzerError& error) {
        return {.words = error.localizedDescription(),
                .isMissingKey = error.code() == AnalyzerError::missingKey};
    } catch (const XMPError& error) {
        return {.words = error.localizedDescription(),
                .isUnwrittenMetadata = error.kind() == XMPError::Case::writeFailed};
    } catch (const std::exception& error) {
        return {.words = describe(error)};
    } catch (...) {
        return {.words = u"Unknown failure."_s};
    }
}

bool holdsOneOf(const QString& text, const QStringList& words) {
    return std::any_of(words.begin(), words.end(),
                       [&text](const QString& word) { return text.contains(word); });
}

/// The words in lower case, without the names of the image, its sidecar and their folder.
QString searchedText(QString words, const QString& image) {
    const QFileInfo file(image);
    words.remove(file.path() + u'/' + file.completeBaseName());
    words.remove(file.path());
    words.remove(file.fileName());
    words.remove(QFileInfo(sidecarPath(image)).fileName());
    return words.toLower();
}

ImageFailure::Kind kindOf(const FailureFacts& facts, const QString& text, bool mentionsRateLimit) {
    using Kind = ImageFailure::Kind;
    if (facts.isMissingKey) {
        return Kind::missingKey;
    }
    if (!facts.isOfService && holdsOneOf(text, {u"writefailed"_s, u"operation not permitted"_s,
                                                u"permission"_s, u"cannot create"_s})) {
        return Kind::permission;
    }
    if (facts.isRateLimit || mentionsRateLimit) {
        return Kind::rateLimit;
    }
    return facts.isUnwrittenMetadata ? Kind::permission : Kind::ordinary;
}

} // namespace

QString reportedWords(const std::exception_ptr& error) {
    const QString words = factsOf(error).words;
    const auto metadataError = failureAs<XMPError>(error);
    const QString detail = metadataError ? metadataError->detail() : QString();
    return detail.isEmpty() ? words : words + u' ' + detail;
}

ImageFailure classifyFailure(const std::exception_ptr& error, const QString& image) {
    const FailureFacts facts = factsOf(error);
    const QString text = searchedText(facts.words, image);
    ImageFailure failure;
    failure.words = facts.words;
    failure.mentionsRateLimit = holdsOneOf(text, {u"rate limit"_s, u"429"_s});
    failure.kind = kindOf(facts, text, failure.mentionsRateLimit);
    return failure;
}

} // namespace ostrelle
