// SPDX-License-Identifier: GPL-3.0-or-later
#include "pipeline/ContactSheet.h"

#include <gtest/gtest.h>

namespace ostrelle {

using namespace Qt::StringLiterals;

TEST(ContactSheet, NoForeignTextIsTakenForMarkup) {
    SheetPicture picture{.checked = {.file = u"/in/<img src=x>\"%1%2.jpg"_s,
                                     .caption = u"<script>alert(1)</script> & %3 Sam"_s,
                                     .findings = {{.kind = FindingKind::unknownName,
                                                   .text = u"<b>“Sam”</b> is unknown."_s,
                                                   .from = 31,
                                                   .to = 34}}},
                         .jpeg = "jpeg"};
    const SheetPicture unread{.checked = {.file = u"/in/b.jpg"_s, .error = u"<i>gone</i>"_s},
                              .note = u"<u>none</u>"_s};
    const QString page = QString::fromUtf8(contactSheet(u"<Title>"_s, {picture, unread}));
    for (const char* markup : {"<script>", "<img src=x>", "<b>", "<i>", "<u>", "<Title>"}) {
        EXPECT_FALSE(page.contains(QLatin1String(markup))) << markup;
    }
    EXPECT_TRUE(page.contains(u"&lt;script&gt;alert(1)&lt;/script&gt; &amp; %3 <mark>Sam</mark>"_s));
    EXPECT_TRUE(
        page.contains(u"alt=\"&lt;img src=x&gt;&quot;%1%2.jpg\" src=\"data:image/jpeg;base64,anBlZw==\""_s));
    EXPECT_TRUE(page.contains(u"2 pictures, 1 to look at, 1 could not be read"_s));
}

} // namespace ostrelle
