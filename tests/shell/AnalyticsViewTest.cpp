// SPDX-License-Identifier: GPL-3.0-or-later
#include "shell/dashboard/AnalyticsView.h"

#include "platform/Files.h"
#include "shell/ShellFixture.h"
#include "shell/dashboard/DashboardFigures.h"
#include "support/Await.h"

#include <gtest/gtest.h>

#include <QComboBox>
#include <QJsonArray>
#include <QJsonDocument>
#include <QPushButton>
#include <QTableWidget>
#include <QTest>

namespace ostrelle {

using namespace Qt::StringLiterals;

TEST(Dashboard, ShowsTheDaysOfItsRangeAndWritesThemToAFile) {
    ShellWorld world;
    world.defaults.set(
        u"Analytics_ImagesByDay"_s,
        QByteArray("[{\"date\":\"2024-07-01\",\"count\":7},{\"date\":\"2024-10-25\",\"count\":1}]"));
    qputenv("HOME", world.folder.path().toUtf8());
    world.program.analytics.recordImageProcessed(); // reads the days anew
    AnalyticsView view(world.parts);
    view.show();
    const auto* table = view.findChild<QTableWidget*>(u"activity"_s);
    ASSERT_EQ(table->rowCount(), 3);
    EXPECT_EQ(table->item(0, 0)->text() + table->item(0, 1)->text(), u"Today1 image");
    EXPECT_EQ(table->item(1, 0)->text() + table->item(1, 1)->text(), u"Yesterday1 image");
    EXPECT_EQ(table->item(2, 0)->text() + table->item(2, 1)->text(), u"Jul 17 images");
    auto* chart = view.findChild<ChartView*>();
    EXPECT_EQ(chart->bars().size(), 2) << "the last 30 days";
    auto* range = view.findChild<QComboBox*>(u"timeRange"_s);
    range->setCurrentIndex(range->findText(u"All Time"_s));
    EXPECT_EQ(chart->bars().size(), 3);
    chart->setFocus(Qt::TabFocusReason);
    QTest::keyClick(chart, Qt::Key_Home);
    EXPECT_EQ(chart->currentWords(), u"2024-07-01: 7 images");
    EXPECT_FALSE(view.findChild<QPushButton*>(u"sendToServer"_s)->isEnabled());

    view.findChild<QPushButton*>(u"exportData"_s)->click();
    await(view.finished());
    EXPECT_EQ(world.alerts.shown.last().title, u"Data Exported");
    const QByteArray json =
        readFile(world.folder.filePath(u"Ostrelle_Captions_Analytics_2024-10-26.json"_s), 10000);
    EXPECT_EQ(QJsonDocument::fromJson(json)[u"images_by_day"].toArray().size(), 3) << json.constData();
}

TEST(Dashboard, ManyDaysShareBarsWithoutLosingAny) {
    ChartView chart;
    chart.resize(700, 200);
    QList<DayCount> days;
    for (int day = 0; day < 5000; ++day) {
        days.append({.date = QDate(2010, 1, 1).addDays(day).toString(u"yyyy-MM-dd"), .count = 2});
    }
    chart.setData(days);
    qint64 sum = 0;
    const QList<ChartView::Bar> bars = chart.bars();
    for (const ChartView::Bar& bar : bars) {
        sum += bar.count;
    }
    EXPECT_EQ(sum, 10'000);
    EXPECT_LE(bars.size(), 140);
    EXPECT_EQ(bars.last().last, days.last().date);
    chart.resize(1, 200);
    EXPECT_EQ(chart.bars().size(), 1);
}

} // namespace ostrelle
