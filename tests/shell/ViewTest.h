// SPDX-License-Identifier: GPL-3.0-or-later
#pragma once

#include "shell/ShellFixture.h"
#include "support/Await.h"

#include <gtest/gtest.h>

#include <QAccessible>
#include <QLabel>
#include <QTest>
#include <memory>

namespace ostrelle {

/// A view over fakes of the outside world, shown off screen.
template <typename View>
class ViewTest : public testing::Test {
protected:
    explicit ViewTest(QSize size) : m_size(size) { show(std::make_unique<View>(world.parts)); }
    ~ViewTest() override { await(view->finished()); }

    void show(std::unique_ptr<View> shown) {
        view = std::move(shown);
        view->resize(m_size);
        view->show();
        view->activateWindow();
        waitUntil([this] { return view->isActiveWindow(); }); // only the active window takes shortcuts
    }
    template <typename Widget = QWidget>
    Widget* find(const QString& name) {
        auto* widget = view->template findChild<Widget*>(name);
        EXPECT_TRUE(widget) << name.toStdString();
        return widget;
    }
    bool isShown(const QString& name) { return find(name)->isVisible(); }
    QString textOf(const QString& name) { return find<QLabel>(name)->text(); }
    /// Clicks a visible widget and waits until its action has finished.
    void click(const QString& name) {
        ASSERT_TRUE(isShown(name)) << name.toStdString();
        QTest::mouseClick(find(name), Qt::LeftButton);
        await(view->finished());
    }
    /// The names of the widgets that Tab reaches, starting at `from`. Each must have an accessible name.
    QStringList tabStops(QWidget* from, const QString& end) {
        QStringList reached;
        for (QWidget* widget = from; widget->objectName() != end && !reached.contains(widget->objectName());
             widget = view->focusWidget()) {
            reached.append(widget->objectName());
            EXPECT_FALSE(QAccessible::queryAccessibleInterface(widget)->text(QAccessible::Name).isEmpty())
                << reached.last().toStdString();
            QTest::keyClick(widget, Qt::Key_Tab);
        }
        return reached;
    }

    ShellWorld world;
    std::unique_ptr<View> view;

private:
    QSize m_size;
};

} // namespace ostrelle
