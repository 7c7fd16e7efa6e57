// SPDX-License-Identifier: GPL-3.0-or-later
#include "pipeline/SelectionTally.h"

#include "metadata/facts/XMPError.h"
#include "pipeline/AnalyzerError.h"
#include "platform/FileError.h"
#include "services/OpenAIError.h"

#include <gtest/gtest.h>

#include <cerrno>
#include <stdexcept>

namespace ostrelle {

using namespace Qt::StringLiterals;
using Kind = ImageFailure::Kind;

namespace {

const QString image = u"/games/429 permission/IMG_4290.CR3"_s;

template <typename E>
ImageFailure classify(E error) {
    return classifyFailure(std::make_exception_ptr(error), image);
}

/// An image that failed with this message.
ImageOutcome failedImage(const QString& file, const QString& words = u"It is damaged."_s) {
    ImageOutcome outcome;
    outcome.file = file;
    outcome.kind = OutcomeKind::failed;
    outcome.cause = std::make_exception_ptr(Error(words));
    return outcome;
}

} // namespace

TEST(ImageFailureTest, TypeAndWordsTellWhatItMeans) {
    const FileError locked(u"write"_s, u"/games/429 permission/IMG_4290.xmp"_s, EACCES);
    const FileError full(u"write"_s, u"/games/429 permission/IMG_4290.xmp"_s, ENOSPC);
    const struct {
        const char* name;
        ImageFailure failure;
        Kind kind;
        bool mentionsRateLimit;
    } rows[] = {
        {"the model's rate limit", classify(OpenAIError::http(429, u"slow down"_s)), Kind::rateLimit, true},
        {"a rate limit in words", classify(Error(u"Rate limit reached."_s)), Kind::rateLimit, true},
        {"another answer of the model", classify(OpenAIError::http(500, u"oops"_s)), Kind::ordinary, false},
        {"a key that may not", classify(OpenAIError::http(403, u"You have insufficient permissions"_s)),
         Kind::ordinary, false},
        {"no key for the model", classify(OpenAIError::missingAPIKey()), Kind::missingKey, false},
        {"no key at all", classify(AnalyzerError(AnalyzerError::missingKey, u"?"_s)), Kind::missingKey,
         false},
        {"a batch's image", classify(AnalyzerError(AnalyzerError::imageFailed, u"Failed to process image"_s)),
         Kind::ordinary, false},
        {"a locked file", classify(locked), Kind::permission, false},
        {"a file of that name on a full disk", classify(full), Kind::ordinary, false},
        {"an operation not permitted", classify(Error(u"Operation Not Permitted"_s)), Kind::permission,
         false},
        {"a file that cannot be made", classify(Error(u"Cannot create it"_s)), Kind::permission, false},
        {"permission before rate limit", classify(Error(u"429: no permission"_s)), Kind::permission, true},
        {"metadata not written", classify(XMPError(XMPError::Case::writeFailed)), Kind::permission, false},
        {"a damaged picture", classify(XMPError(XMPError::Case::parseFailed)), Kind::ordinary, false},
        {"a library's", classify(std::runtime_error("IMG_4290.CR3 is broken")), Kind::ordinary, false},
        {"no exception", classify(1), Kind::ordinary, false},
    };
    for (const auto& row : rows) {
        EXPECT_EQ(row.failure.kind, row.kind) << row.name;
        EXPECT_EQ(row.failure.mentionsRateLimit, row.mentionsRateLimit) << row.name;
        EXPECT_FALSE(row.failure.words.isEmpty()) << row.name;
    }
    EXPECT_EQ(classify(locked).words, locked.localizedDescription());
}

TEST(SelectionTallyTest, TheClosingMessageNamesBothCounts) {
    const struct {
        int success;
        int failed;
        const char16_t* message;
    } rows[] = {
        {1, 0, u"Successfully captioned 1 image"},   {25, 0, u"Successfully captioned 25 images"},
        {0, 1, u"Failed to caption 1 image"},        {0, 3, u"Failed to caption 3 images"},
        {1, 2, u"Captioned 1 image, failed 2"},      {2, 1, u"Captioned 2 images, failed 1"},
        {0, 0, u"All images have captions already"},
    };
    for (const auto& row : rows) {
        QList<ImageOutcome> images(row.failed, failedImage(u"/g/a.jpg"_s));
        images.resize(row.failed + row.success);
        for (int index = row.failed; index < images.size(); ++index) {
            images[index].kind = OutcomeKind::captioned;
        }
        images.emplace_back().kind = OutcomeKind::skipped; // not counted
        EXPECT_EQ(SelectionTally::of(images).closingMessage(), row.message);
    }
}

TEST(SelectionTallyTest, TheFirstThreePermissionErrorsAreTold) {
    QList<ImageOutcome> images{failedImage(u"/g/x.jpg"_s, u"not this"_s)};
    for (const QString& letter : {u"a"_s, u"b"_s, u"c"_s}) {
        images.append(failedImage(u"/g/y.jpg"_s, u"permission "_s + letter));
    }
    EXPECT_EQ(SelectionTally::of(images).errorDetail(), u"permission a; permission b; permission c");
    images += {failedImage(u"/g/z.jpg"_s, u"permission d"_s), failedImage(u"/g/z.jpg"_s, u"permission e"_s)};
    const SelectionTally tally = SelectionTally::of(images);
    EXPECT_EQ(tally.errorDetail(), u"permission a; permission b; permission c... and 2 more");
    EXPECT_EQ(tally.failed(), 6);
    EXPECT_EQ(tally.permissionErrors(), 5);
}

TEST(SelectionTallyTest, OnlyAPermissionErrorBringsUpTheRateLimit) {
    const SelectionTally tally = SelectionTally::of({failedImage(image, u"429"_s)});
    EXPECT_FALSE(tally.mentionsRateLimit());
    EXPECT_EQ(tally.permissionErrors(), 0);
    EXPECT_EQ(tally.rateLimitedNames(), QStringList{u"IMG_4290.CR3"_s});
    EXPECT_TRUE(SelectionTally::of({failedImage(image, u"429: no permission"_s)}).mentionsRateLimit());
}

TEST(SelectionTallyTest, TheHintIsForRawImages) {
    EXPECT_FALSE(SelectionTally::of({failedImage(u"/g/a.jpg"_s)}).hint());
    const SelectionTally tally = SelectionTally::of({failedImage(u"/g/a.jpg"_s), failedImage(u"/g/b.Nef"_s)});
    EXPECT_EQ(tally.hint(), u"When manually captioning RAW files, also select the matching .xmp sidecar(s).");
    EXPECT_EQ(tally.failedNames(), (QStringList{u"a.jpg"_s, u"b.Nef"_s}));
}

} // namespace ostrelle
