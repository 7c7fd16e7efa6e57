// SPDX-License-Identifier: GPL-3.0-or-later
#include "transfer/remote/ServerFiles.h"

#include <gtest/gtest.h>

namespace ostrelle {

using namespace Qt::StringLiterals;

TEST(ServerFiles, AServerDoesNotDecideWhereFilesGo) {
    const QStringList bad = {u"../x.jpg"_s,
                             u"/etc/x.jpg"_s,
                             u"a\\x.jpg"_s,
                             u".x.jpg"_s,
                             u"a\nx.jpg"_s,
                             u"a\0x.jpg"_s,
                             u"a\u0085x.jpg"_s,
                             QString(252, u'x') + u".jpg"_s,
                             QString(126, u'\u00FC') + u".jpg"_s};
    QList<FTPFileInfo> listing;
    for (const QString& name : bad) {
        listing.append({.name = name, .size = 1, .isDirectory = false});
    }
    const ServerFiles files = sortListing(listing, NameRules::exact);
    EXPECT_EQ(files.refused.size(), bad.size());
    EXPECT_TRUE(files.images.isEmpty());
}

TEST(ServerFiles, OfTwoNamesThatAreOneTheFirstCounts) {
    const QList<FTPFileInfo> listing = {{u"photos.jpg"_s, 1, true},
                                        {u"IMG.XMP"_s, 1, false},
                                        {u"\u00FC.jpg"_s, 1, false},
                                        {u"u\u0308.JPG"_s, 1, false},
                                        {u"\u00FC.jpg"_s, 2, false}};
    const ServerFiles exact = sortListing(listing, NameRules::exact);
    EXPECT_EQ(exact.images.size(), 2);
    EXPECT_EQ(exact.metadata.size(), 1);
    const ServerFiles folding = sortListing(listing, NameRules::folding);
    EXPECT_EQ(folding.images, QList<FTPFileInfo>({{u"\u00FC.jpg"_s, 1, false}}));
    EXPECT_EQ(folding.refused.size(), 2);
}

} // namespace ostrelle
