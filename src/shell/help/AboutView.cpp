// SPDX-License-Identifier: GPL-3.0-or-later
#include "shell/help/AboutView.h"

#include "shell/toolkit/AccessibleView.h"
#include "shell/toolkit/ActionButton.h"
#include "shell/toolkit/Icon.h"
#include "shell/toolkit/Theme.h"

#include <QCoreApplication>
#include <QHBoxLayout>
#include <QKeyEvent>
#include <QLabel>
#include <QVBoxLayout>

namespace ostrelle {

using namespace Qt::StringLiterals;

namespace {

constexpr int iconSize = 132;

QLabel* makeIcon() {
    auto* label = new QLabel;
    label->setObjectName(u"applicationIcon"_s);
    label->setAlignment(Qt::AlignCenter);
    label->setPixmap(applicationIcon().pixmap(QSize(iconSize, iconSize), label->devicePixelRatioF()));
    return label;
}

QLabel* makeCentred(const QString& words, const QString& name, TypeSize size, TextTone tone) {
    QLabel* label = makeLabel(words, size, tone);
    label->setObjectName(name);
    label->setAlignment(Qt::AlignCenter);
    return label;
}

} // namespace

AboutView::AboutView(Workspace& workspace, const WebPages& pages, QWidget* parent)
    : QWidget(parent), m_workspace(workspace) {
    setObjectName(u"about"_s);
    setAccessibleRole(*this, QAccessible::Window);
    setFocusPolicy(Qt::StrongFocus); // no button has the focus before the user gives it
    setFocus();
    auto* buttons = new QHBoxLayout;
    buttons->setSpacing(measure::controlSpacing);
    buttons->addStretch();
    if (!pages.product.isEmpty()) {
        buttons->addWidget(makeLink(u"Learn More"_s, u"learnMore"_s, pages.product));
    }
    if (!pages.feedback.isEmpty()) {
        buttons->addWidget(makeLink(u"Send Feedback"_s, u"aboutSendFeedback"_s, pages.feedback));
    }
    buttons->addStretch();

    auto* layout = new QVBoxLayout(this);
    layout->setContentsMargins(30, 36, 30, 30);
    layout->setSpacing(0);
    layout->addStretch(2);
    layout->addWidget(makeIcon());
    layout->addSpacing(20);
    layout->addWidget(
        makeCentred(u"Ostrelle Captions"_s, u"applicationName"_s, TypeSize::title, TextTone::plain));
    layout->addSpacing(6);
    layout->addWidget(makeCentred(u"Version "_s + QCoreApplication::applicationVersion(), u"version"_s,
                                  TypeSize::text, TextTone::dim));
    layout->addStretch(2);
    layout->addLayout(buttons);
    layout->addSpacing(20);
    layout->addWidget(makeCentred(u"© 2026 The Ostrelle Captions developers"_s, u"copyright"_s,
                                  TypeSize::small, TextTone::dim));
}

ActionButton* AboutView::makeLink(const QString& words, const QString& name, const QUrl& page) {
    auto* button = new ActionButton(words);
    button->setObjectName(name);
    button->setAutoDefault(true); // Enter presses the one with the focus
    connect(button, &ActionButton::clicked, this, [this, page] { m_workspace.openLink(page); });
    return button;
}

void AboutView::keyPressEvent(QKeyEvent* event) {
    if (event->key() == Qt::Key_Escape) {
        close();
        return;
    }
    QWidget::keyPressEvent(event);
}

} // namespace ostrelle
