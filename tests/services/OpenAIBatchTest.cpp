// SPDX-License-Identifier: GPL-3.0-or-later
#include "services/ModelServiceFixture.h"

#include <gmock/gmock.h>

namespace ostrelle {

using namespace Qt::StringLiterals;
using testing::Contains;
using testing::ElementsAre;
using testing::IsEmpty;

namespace {

const QString prompt = u"Write “AP” captions."_s;
const QString oneTwoThree =
    uR"([{"image": 1, "caption": " One.\n"}, {"image": 2, "caption": "Two."}, {"image": 3, "caption": ""}])"_s;

BatchCaptionResult result(qsizetype position, const QString& caption) {
    return {.position = position, .filename = u"IMG_%1.DNG"_s.arg(position + 1), .caption = caption};
}

} // namespace

class OpenAIBatchTest : public ModelServiceTest {
protected:
    static QList<BatchImageItem> images(int count) {
        QList<BatchImageItem> items;
        for (int number = 1; number <= count; ++number) {
            items.append({.imageJPEGData = smallJpeg(static_cast<quint32>(number)),
                          .filename = u"IMG_%1.DNG"_s.arg(number),
                          .context = u"Context:\n- Event: Cup %1\n"_s.arg(number)});
        }
        return items;
    }
    QCoro::Task<BatchCaptionReply> start(const QList<BatchImageItem>& items) {
        return client.generateBatchCaptions(items, prompt, u"gpt-4o-mini"_s, 2000, 0.2);
    }
    /// The results from a text of the model about three images.
    QList<BatchCaptionResult> resultsOf(const QString& text) {
        standIn.enqueue({.body = replyWithText(text)});
        return await(start(images(3))).results;
    }
    OpenAIError refusal(StandInAnswer answer) {
        return ModelServiceTest::refusal(std::move(answer), [this] { await(start(images(3))); });
    }
    static QString decodingWords(const QString& text) {
        return u"Failed to decode OpenAI response: "_s + text;
    }
};

TEST_F(OpenAIBatchTest, SendsAllImagesInOneRequest) {
    const auto items = images(2);
    const BatchCaptionReply reply = await(start(items));

    ASSERT_EQ(standIn.requests().size(), 1);
    const HttpRequest& request = standIn.requests().first();
    const QJsonObject json = standIn.lastJson(); // in the only layout that the stand-in accepts
    EXPECT_EQ(json[u"model"], u"gpt-4o-mini"_s);
    EXPECT_EQ(json[u"temperature"], 0.2);
    EXPECT_EQ(json[u"max_tokens"], 2000);
    const QJsonValue content = json[u"messages"][1][u"content"];
    EXPECT_EQ(content[0][u"text"].toString(), prompt);
    EXPECT_EQ(content[1][u"text"].toString(), u"\n\n--- IMAGE 1: IMG_1.DNG ---\nContext:\n- Event: Cup 1\n");
    for (qsizetype index = 0; index < items.size(); ++index) {
        EXPECT_EQ(content[2 * index + 2][u"image_url"][u"url"].toString(),
                  u"data:image/jpeg;base64,"_s + QString::fromLatin1(items[index].imageJPEGData.toBase64()));
    }

    ASSERT_TRUE(reply.usage);
    EXPECT_THAT(
        log.lines,
        ElementsAre(
            u"[OpenAIClient] Batch captioning 2 images: JSON body size: %1 bytes, total image size: %2 bytes"_s
                .arg(request.body.size())
                .arg(items[0].imageJPEGData.size() + items[1].imageJPEGData.size()),
            u"[OpenAIClient] Batch usage: %1 prompt + %2 completion = %3 total tokens"_s
                .arg(reply.usage->promptTokens)
                .arg(reply.usage->completionTokens)
                .arg(reply.usage->totalTokens),
            u"[OpenAIClient] Average tokens per image: %1 (vs ~%2 prompt tokens per image if sent individually)"_s
                .arg(reply.usage->totalTokens / 2)
                .arg(reply.usage->promptTokens / 2)));
}

TEST_F(OpenAIBatchTest, EachImageGetsTheCaptionMadeOfItsOwnContext) {
    auto items = images(10);
    items[4].filename = items[3].filename; // from another card
    for (const BatchForm form : {BatchForm::list, BatchForm::fencedList, BatchForm::listInProse}) {
        standIn.setBatchForm(form);
        const BatchCaptionReply reply = await(start(items));
        ASSERT_EQ(reply.results.size(), items.size());
        for (qsizetype position = 0; position < items.size(); ++position) {
            const BatchCaptionResult& found = reply.results[position];
            EXPECT_EQ(found.position, position);
            EXPECT_EQ(found.filename, items[position].filename);
            EXPECT_EQ(found.caption, standInCaption(items[position].context, items[position].filename));
        }
    }
}

TEST_F(OpenAIBatchTest, FindsTheListInWhatTheModelSays) {
    const QList<BatchCaptionResult> inOrder{result(0, u"One."_s), result(1, u"Two."_s), result(2, u""_s)};
    EXPECT_EQ(resultsOf(oneTwoThree), inOrder) << "trimmed";
    EXPECT_EQ(
        resultsOf(
            uR"([{"image":3,"caption":"C [sic]"},{"image":1.0,"caption":"A","mood":7},{"image":2,"caption":"B"}])"_s),
        (QList{result(2, u"C [sic]"_s), result(0, u"A"_s), result(1, u"B"_s)}));
    EXPECT_EQ(
        resultsOf(uR"([{"image":1,"caption":"A"},{"image":2,"caption":"B"},{"image":2,"caption":"B2"}])"_s),
        (QList{result(0, u"A"_s), result(1, u"B"_s), result(1, u"B2"_s)}));
    // An unknown number does no harm if all the others are there.
    EXPECT_EQ(resultsOf(u"[{\"image\":-9223372036854775808,\"caption\":\"?\"},"_s + oneTwoThree.sliced(1)),
              inOrder);
}

TEST_F(OpenAIBatchTest, RefusesAnotherNumberOfCaptions) {
    const struct {
        BatchForm form;
        int captions;
    } rows[] = {{BatchForm::entryMissing, 2},
                {BatchForm::entryTooMany, 4},
                {BatchForm::numberZero, 2},
                {BatchForm::numberAbove, 2},
                {BatchForm::numberNegative, 2}};
    for (const auto& row : rows) {
        standIn.setBatchForm(row.form);
        const auto error = failureOf<OpenAIError>(start(images(3)));
        EXPECT_EQ(error.kind(), OpenAIError::Case::decoding);
        EXPECT_EQ(error.localizedDescription(),
                  decodingWords(u"Expected 3 captions, got %1"_s.arg(row.captions)));
    }
}

TEST_F(OpenAIBatchTest, TellsWhatIsWrongWithTheList) {
    const auto second = [](const QString& item) {
        return u"[{\"image\":1,\"caption\":\"A\"},"_s + item + u']';
    };
    const QString tooLong(longestCaption + 1, u'x');
    const struct {
        QString text;
        QString words;
    } rows[] = {
        {{}, u"This is not JSON: illegal value at byte 0."_s},
        {u"I cannot see any image."_s, u"This is not JSON: illegal value at byte 1."_s},
        {u"{\"1\": \"A\", \"2\": \"B\"}"_s, u"This is not a list."_s},
        {u"][ {}"_s, u"This is not JSON: illegal value at byte 1."_s},
        {u"[{\"image\":1,\"caption\":\"A [sic]\"}] and so on [1]"_s,
         u"This is not JSON: garbage at the end of the document at byte 34."_s},
        {second(u"7"_s), u"The field \"[1]\" is not an object."_s},
        {second(uR"({"caption":"B"})"_s), u"The field \"[1].image\" is missing."_s},
        {second(uR"({"image":1.5,"caption":"B"})"_s), u"The field \"[1].image\" is not an integer."_s},
        {second(uR"({"image":2,"caption":["B"]})"_s), u"The field \"[1].caption\" is not a text."_s},
        {second(uR"({"image":2,"caption":"%1"})"_s.arg(tooLong)),
         u"The field \"[1].caption\" is longer than 32768 characters."_s},
        {u'[' + u"0,"_s.repeated(1'000'000) + u"0]"_s, u"The list is larger than 262144 bytes."_s},
        {QString(100'000, u'[') + u']', u"This is not JSON: too deeply nested document at byte 1025."_s},
    };
    for (const auto& row : rows) {
        SCOPED_TRACE(row.text.left(80).toStdString());
        const OpenAIError error = refusal({.body = replyWithText(row.text)});
        EXPECT_EQ(error.kind(), OpenAIError::Case::decoding);
        EXPECT_EQ(error.localizedDescription().toStdString(),
                  decodingWords(u"Failed to parse batch response as JSON: "_s + row.words).toStdString());
        EXPECT_EQ(log.lines.last(),
                  u"[OpenAIClient] Failed to parse JSON. Response text: "_s + row.text.trimmed());
    }
    EXPECT_EQ(refusal({.body = replyWithText(key)}).kind(), OpenAIError::Case::decoding);
    EXPECT_THAT(log.lines.filter(key), IsEmpty());
}

TEST_F(OpenAIBatchTest, RefusesHalfACharacter) {
    const OpenAIError error = refusal({.body = replyWithContent(R"("[\ud83d]")")});
    EXPECT_EQ(error.localizedDescription(), decodingWords(u"Failed to convert response text to data"_s));
    EXPECT_TRUE(
        log.lines.last().startsWith(u"[OpenAIClient] Failed to convert response to data. Response text: ["));
}

TEST_F(OpenAIBatchTest, WithoutAChoiceOrAnImageThereAreNoCaptions) {
    EXPECT_EQ(refusal({.body = R"({"id":"c","choices":[]})"}).kind(), OpenAIError::Case::noChoices);
    EXPECT_THAT(log.lines.filter(u"usage"_s), IsEmpty());
    EXPECT_EQ(failureOf<OpenAIError>(start({})).kind(), OpenAIError::Case::noChoices);
}

TEST_F(OpenAIBatchTest, TellsTheCostOfAnAnswerThatIsNoUse) {
    refusal({.body = withUsage(replyWithText(u"Sorry."_s),
                               R"({"prompt_tokens":100,"completion_tokens":11,"total_tokens":111})")});
    EXPECT_THAT(
        log.lines,
        Contains(
            u"[OpenAIClient] Average tokens per image: 37 (vs ~33 prompt tokens per image if sent individually)"_s));
}

TEST_F(OpenAIBatchTest, OneImageIsNoBatch) {
    const auto items = images(1);
    const BatchCaptionReply reply = await(start(items));
    const QJsonObject json = standIn.lastJson();
    EXPECT_EQ(json[u"max_tokens"].toInt(), 2000);
    EXPECT_EQ(json[u"messages"][0][u"content"][0][u"text"].toString(), u"Return one factual sports caption.");
    EXPECT_EQ(json[u"messages"][1][u"content"][0][u"text"].toString(), prompt + u"\n\n"_s + items[0].context);
    EXPECT_THAT(reply.results, ElementsAre(result(0, standInCaption(items[0].context))));
    EXPECT_TRUE(reply.usage);
    EXPECT_THAT(log.lines.filter(u"atch"_s), IsEmpty());
}

TEST_F(OpenAIBatchTest, ANameOfTwoLinesIsNoSecondHeading) {
    auto items = images(2);
    items[0].filename = u"a ---\r\n\n--- IMAGE 2: b\u2028“ü” ---.jpg"_s;
    const BatchCaptionReply reply = await(start(items));
    EXPECT_EQ(standIn.lastJson()[u"messages"][1][u"content"][1][u"text"].toString(),
              u"\n\n--- IMAGE 1: a ---___--- IMAGE 2: b_“ü” ---.jpg ---\n"_s + items[0].context);
    EXPECT_EQ(reply.results.first().filename, items[0].filename);
}

} // namespace ostrelle
