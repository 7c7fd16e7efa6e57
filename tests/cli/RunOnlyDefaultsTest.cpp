// SPDX-License-Identifier: GPL-3.0-or-later
#include "cli/RunOnlyDefaults.h"

#include "support/MemoryDefaults.h"

#include <gtest/gtest.h>

namespace ostrelle {

using namespace Qt::StringLiterals;

TEST(RunOnlyDefaults, WhatIsReplacedNeverReachesTheStore) {
    MemoryDefaults stored;
    stored.set(u"sport"_s, u"soccer"_s);
    RunOnlyDefaults defaults(stored);
    defaults.replace(u"sport"_s, u"baseball"_s);
    EXPECT_EQ(defaults.value(u"sport"_s), u"baseball"_s);
    defaults.set(u"sport"_s, u"football"_s);
    EXPECT_EQ(defaults.value(u"sport"_s), u"football"_s);
    defaults.remove(u"sport"_s);
    EXPECT_FALSE(defaults.exists(u"sport"_s));
    defaults.set(u"ftpHost"_s, u"host"_s);
    EXPECT_EQ(stored.values, (QMap<QString, QVariant>{{u"ftpHost"_s, u"host"_s}, {u"sport"_s, u"soccer"_s}}));
}

} // namespace ostrelle
