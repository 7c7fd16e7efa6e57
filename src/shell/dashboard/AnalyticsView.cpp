// SPDX-License-Identifier: GPL-3.0-or-later
#include "shell/dashboard/AnalyticsView.h"

#include "core/Attempt.h"
#include "core/OffMainThread.h"
#include "platform/Files.h"
#include "shell/dashboard/DashboardFigures.h"
#include "shell/toolkit/AccessibleView.h"
#include "shell/toolkit/ActionButton.h"
#include "shell/toolkit/Card.h"
#include "shell/toolkit/Picker.h"
#include "shell/toolkit/Theme.h"

#include <QFileInfo>
#include <QGridLayout>
#include <QHeaderView>
#include <QJsonDocument>
#include <QKeyEvent>
#include <QLabel>
#include <QStandardPaths>
#include <QTableWidget>
#include <QVBoxLayout>
#include <chrono>
#include <utility>

namespace ostrelle {

using namespace Qt::StringLiterals;

namespace {

QDate dayOf(const AnalyticsStore& analytics) {
    return QDate::fromString(analytics.today(), u"yyyy-MM-dd"_s);
}

QString desktopFolder() {
    const QString desktop = QStandardPaths::writableLocation(QStandardPaths::DesktopLocation);
    return QFileInfo(desktop).isDir() ? desktop
                                      : QStandardPaths::writableLocation(QStandardPaths::HomeLocation);
}

} // namespace

AnalyticsView::AnalyticsView(ShellParts parts, QWidget* parent)
    : QWidget(parent), m_parts(parts), m_tasks([&console = parts.console](const QString& words) {
        console.print(u"Failed to export analytics: "_s + words);
    }) {
    setObjectName(u"dashboard"_s);
    setAccessibleRole(*this, QAccessible::Window);
    auto* layout = new QVBoxLayout(this);
    layout->setContentsMargins(measure::windowMargin, 16, measure::windowMargin, 14);
    layout->setSpacing(measure::cardSpacing);
    layout->addWidget(makeHead());
    layout->addWidget(makeFigures());
    layout->addWidget(makeChart(), 3);
    layout->addWidget(makeActivity(), 4);
    layout->addWidget(makeFoot());
    constexpr std::chrono::milliseconds pause(500); // a run changes the figures with each image
    m_change.setSingleShot(true);
    m_change.setInterval(pause);
    connect(&m_change, &QTimer::timeout, this, &AnalyticsView::showAll);
    connect(&parts.analytics, &AnalyticsStore::changed, this, &AnalyticsView::showSoon);
    connect(&parts.history, &UsageHistory::changed, this, &AnalyticsView::showSoon);
    connect(&parts.status, &StatusStore::batchFinished, this, &AnalyticsView::showSoon);
}

QWidget* AnalyticsView::makeHead() {
    auto* head = new QWidget;
    auto* layout = new QGridLayout(head);
    layout->setContentsMargins(2, 0, 2, 0);
    layout->addWidget(makeLabel(u"Analytics Dashboard"_s, TypeSize::title), 0, 0);
    layout->addWidget(
        makeLabel(u"Hidden developer view - Cmd+Shift+D to access"_s, TypeSize::small, TextTone::dim), 1, 0);
    m_range = new Picker;
    m_range->setObjectName(u"timeRange"_s);
    m_range->setAccessibleName(u"Time Range"_s);
    for (const auto& [words, days] : {std::pair(u"Last 7 Days"_s, 7), std::pair(u"Last 30 Days"_s, 30),
                                      std::pair(u"Last 90 Days"_s, 90), std::pair(u"All Time"_s, 0)}) {
        m_range->addItem(words, days);
    }
    m_range->setCurrentIndex(m_range->findData(m_selectedDays));
    connect(m_range, &QComboBox::currentIndexChanged, this, [this] {
        m_selectedDays = m_range->currentData().toInt();
        showAll();
    });
    layout->addWidget(m_range, 0, 1, 2, 1, Qt::AlignRight | Qt::AlignVCenter);
    layout->setColumnStretch(0, 1);
    return head;
}

QWidget* AnalyticsView::makeFigures() {
    auto* grid = new QWidget;
    auto* layout = new QGridLayout(grid);
    layout->setContentsMargins(0, 0, 0, 0);
    layout->setSpacing(measure::controlSpacing);
    const QList<Figure> figures = dashboardFigures(m_parts.analytics, m_parts.status);
    constexpr int columns = 3;
    for (int index = 0; index < figures.size(); ++index) {
        auto* content = new QWidget;
        auto* lines = new QVBoxLayout(content);
        lines->setContentsMargins(0, 0, 0, 0);
        lines->setSpacing(2);
        QLabel* title = makeLabel(figures.at(index).title, TypeSize::small, TextTone::dim);
        QLabel* value = makeLabel({}, TypeSize::title);
        value->setObjectName(u"figure%1"_s.arg(index));
        lines->addWidget(title);
        lines->addWidget(value);
        auto* card = new Card;
        card->addPaddedRow(content);
        layout->addWidget(card, index / columns, index % columns);
        m_figures.append(value);
    }
    return grid;
}

QWidget* AnalyticsView::makeChart() {
    m_chart = new ChartView;
    auto* card = new Card(u"Images Processed Over Time"_s);
    card->addPaddedRow(m_chart);
    return card;
}

QWidget* AnalyticsView::makeActivity() {
    m_activity = new QTableWidget(0, 4);
    m_activity->setObjectName(u"activity"_s);
    m_activity->setAccessibleName(u"Recent Activity"_s);
    m_activity->setHorizontalHeaderLabels({u"Day"_s, u"Images"_s, u"Outcomes"_s, u"Estimated Cost"_s});
    QHeaderView* header = m_activity->horizontalHeader();
    header->setDefaultAlignment(Qt::AlignLeft | Qt::AlignVCenter);
    header->setSectionResizeMode(QHeaderView::Stretch);
    header->setMinimumHeight(header->fontMetrics().height() + 14);
    m_activity->verticalHeader()->hide();
    m_activity->setShowGrid(false);
    m_activity->setFrameShape(QFrame::NoFrame);
    m_activity->setEditTriggers(QAbstractItemView::NoEditTriggers);
    m_activity->setSelectionBehavior(QAbstractItemView::SelectRows);
    m_activity->setTabKeyNavigation(false);
    m_activity->setMinimumHeight(widthForType(110));
    auto* card = new Card(u"Recent Activity"_s);
    card->addPaddedRow(m_activity);
    return card;
}

QWidget* AnalyticsView::makeFoot() {
    m_send = new ActionButton(u"Send to Server"_s);
    m_send->setObjectName(u"sendToServer"_s);
    connect(m_send, &ActionButton::clicked, &m_parts.analytics, &AnalyticsStore::forceSend);
    auto* toFile = new ActionButton(u"Export Data"_s);
    toFile->setObjectName(u"exportData"_s);
    connect(toFile, &ActionButton::clicked, this, [this] { m_tasks.spawn(exportData(m_parts)); });
    m_sendObstacle = makeLabel({}, TypeSize::small, TextTone::dim);
    auto* foot = new QWidget;
    auto* layout = new QHBoxLayout(foot);
    layout->setContentsMargins(2, 0, 2, 0);
    layout->addWidget(m_sendObstacle, 1);
    layout->addWidget(m_send);
    layout->addWidget(toFile);
    return foot;
}

void AnalyticsView::showEvent(QShowEvent* event) {
    QWidget::showEvent(event);
    showAll(); // it may be another day
}

void AnalyticsView::showSoon() {
    if (isVisible() && !m_change.isActive()) {
        m_change.start();
    }
}

void AnalyticsView::showAll() {
    const QList<Figure> figures = dashboardFigures(m_parts.analytics, m_parts.status);
    for (qsizetype index = 0; index < figures.size(); ++index) {
        m_figures.at(index)->setText(figures.at(index).value);
    }
    const QDate today = dayOf(m_parts.analytics);
    m_chart->setData(daysInRange(m_parts.analytics.imagesProcessedByDay(), m_selectedDays, today));
    showActivity();
    const std::optional<QString> obstacle = m_parts.analytics.sendingObstacle();
    m_send->setEnabled(!obstacle);
    m_send->setToolTip(obstacle.value_or(QString()));
    m_send->setAccessibleDescription(obstacle.value_or(QString()));
    m_sendObstacle->setText(obstacle.value_or(QString()));
}

void AnalyticsView::showActivity() {
    const QList<ActivityRow> rows = recentActivity(m_parts.analytics.imagesProcessedByDay(),
                                                   m_parts.history.days(), dayOf(m_parts.analytics));
    m_activity->setRowCount(static_cast<int>(rows.size()));
    for (int row = 0; row < rows.size(); ++row) {
        const ActivityRow& day = rows.at(row);
        int column = 0;
        for (const QString& words : {day.day, day.images, day.outcomes, day.cost}) {
            auto* item = new QTableWidgetItem(words.isEmpty() ? u"–"_s : words);
            item->setToolTip(words);
            m_activity->setItem(row, column++, item);
        }
    }
}

QCoro::Task<> AnalyticsView::exportData(ShellParts parts) {
    const QByteArray json =
        QJsonDocument(exportedFigures(parts.analytics, parts.status)).toJson(QJsonDocument::Indented);
    const QString name = u"/Ostrelle_Captions_Analytics_"_s + parts.analytics.today() + u".json"_s;
    auto write = [name, json] {
        const QString path = desktopFolder() + name;
        replaceFile(path, json);
        return path;
    };
    const auto written = co_await attemptOffMainThread(write);
    Alert alert;
    alert.buttons = QStringList{u"OK"_s};
    if (written) {
        parts.console.print(u"Analytics exported to: "_s + *written);
        alert.title = u"Data Exported"_s;
        alert.text = u"Analytics data has been exported to your Desktop."_s;
    } else {
        parts.console.print(u"Failed to export analytics: "_s + written.words());
        alert.title = u"Data Not Exported"_s;
        alert.text = written.words();
    }
    co_await parts.alerts.show(alert);
}

void AnalyticsView::keyPressEvent(QKeyEvent* event) {
    if (event->key() == Qt::Key_Escape) {
        close();
        return;
    }
    QWidget::keyPressEvent(event);
}

} // namespace ostrelle
