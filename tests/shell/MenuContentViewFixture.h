// SPDX-License-Identifier: GPL-3.0-or-later
#pragma once

#include "shell/ShellFixture.h"
#include "shell/panel/MenuContentView.h"
#include "shell/toolkit/ProgressLine.h"
#include "support/Await.h"

#include <gtest/gtest.h>

#include <QApplication>
#include <QDropEvent>
#include <QFile>
#include <QLabel>
#include <QMimeData>
#include <QTest>
#include <QUrl>

namespace ostrelle {

/// The main panel over fakes of the outside world, on a screen that nobody sees.
class MenuContentViewTest : public testing::Test {
protected:
    MenuContentViewTest() {
        panel.resize(480, 600);
        panel.show();
    }
    ~MenuContentViewTest() override { await(panel.finished()); }

    template <typename Widget = QWidget>
    Widget* find(const QString& name) {
        auto* widget = panel.findChild<Widget*>(name);
        EXPECT_TRUE(widget) << name.toStdString();
        return widget;
    }
    void click(const QString& name) {
        QTest::mouseClick(find(name), Qt::LeftButton);
        await(panel.finished());
    }
    bool isShown(const QString& name) { return find(name)->isVisible(); }
    QString textOf(const QString& name) { return find<QLabel>(name)->text(); }

    void configure(bool key, bool folder, bool roster) {
        world.defaults.set(QStringLiteral("OPENAI_API_KEY"), key ? QStringLiteral("key") : QString());
        const auto path = folder ? std::optional(world.folder.path()) : std::nullopt;
        world.settings.setIngestFolder(path);
        world.settings.setDestinationFolder(path);
        world.settings.setCodeReplacementsFile(roster ? std::optional(QStringLiteral("/nowhere/roster.txt"))
                                                      : std::nullopt);
    }
    QString touch(const QString& name) {
        QFile file(world.folder.filePath(name));
        EXPECT_TRUE(file.open(QIODevice::WriteOnly));
        return file.fileName();
    }

    /// Uses another window and then the panel again.
    void comeBack() {
        QWidget another;
        another.show();
        another.activateWindow();
        waitUntil([&another] { return another.isActiveWindow(); });
        panel.activateWindow();
        waitUntil([this] { return panel.isActiveWindow(); });
    }

    /// Whether the panel takes the files, which are dropped then.
    bool drop(const QStringList& paths, Qt::DropActions offered = Qt::CopyAction | Qt::MoveAction) {
        QMimeData data;
        QList<QUrl> urls;
        for (const QString& path : paths) {
            urls.append(QUrl::fromLocalFile(path));
        }
        data.setUrls(urls);
        QDragEnterEvent enter(QPoint(200, 200), offered, &data, Qt::LeftButton, Qt::NoModifier);
        enter.ignore();
        QApplication::sendEvent(&panel, &enter);
        QDropEvent event(QPointF(200, 200), offered, &data, Qt::LeftButton, Qt::NoModifier);
        event.ignore();
        QApplication::sendEvent(&panel, &event);
        EXPECT_EQ(enter.isAccepted(), event.isAccepted());
        EXPECT_TRUE(!event.isAccepted() || event.dropAction() == Qt::CopyAction);
        await(panel.finished());
        return event.isAccepted();
    }

    /// What the progress shows: words, count and the bar's per mille, each row in a line.
    QStringList progress() {
        QStringList lines;
        for (int row = 0;; ++row) {
            const auto* view = panel.findChild<QWidget*>(QStringLiteral("progressRow%1").arg(row));
            if (view == nullptr) {
                return lines;
            }
            if (!view->isVisible()) {
                continue;
            }
            QStringList parts;
            for (const QLabel* label : view->findChildren<QLabel*>()) {
                parts.append(label->isVisible() ? label->text() : QString());
            }
            const auto* bar = view->findChild<ProgressLine*>();
            parts.append(bar->isVisible() ? QString::number(qRound(bar->fraction() * 1000)) : QString());
            lines.append(parts.join(u'|'));
        }
    }

    ShellWorld world;
    MenuContentView panel{world.parts};
};

} // namespace ostrelle
