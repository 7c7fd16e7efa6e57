// SPDX-License-Identifier: GPL-3.0-or-later
#include "shell/tour/OnboardingView.h"

#include "shell/toolkit/AccessibleView.h"
#include "shell/toolkit/ActionButton.h"
#include "shell/toolkit/StepDots.h"
#include "shell/toolkit/Theme.h"
#include "shell/tour/OnboardingPage.h"
#include "shell/tour/OnboardingSteps.h"

#include <QKeyEvent>
#include <QPainter>
#include <QStackedWidget>
#include <QVBoxLayout>

namespace ostrelle {

using namespace Qt::StringLiterals;

namespace {

const QString completedKey = u"hasCompletedOnboarding"_s;

bool isEnter(const QKeyEvent& event) {
    return event.key() == Qt::Key_Return || event.key() == Qt::Key_Enter;
}

} // namespace

OnboardingView::OnboardingView(ShellParts parts, QWidget* parent)
    : QWidget(parent)
    , m_parts(parts)
    , m_actions(parts)
    , m_pages(makePages())
    , m_back(new ActionButton(u"Back"_s))
    , m_next(new ActionButton(u"Next"_s, ActionKind::main))
    , m_getStarted(new ActionButton(u"Get Started"_s, ActionKind::main))
    , m_dots(new StepDots(m_pages->count())) {
    setObjectName(u"onboarding"_s);
    setAccessibleRole(*this, QAccessible::Window);
    setFocusPolicy(Qt::StrongFocus); // the keys turn pages before any button has the focus
    auto* layout = new QVBoxLayout(this);
    layout->setContentsMargins(60, 36, 60, 26);
    layout->addWidget(m_pages, 1);
    layout->addLayout(makeFoot());
    connect(m_back, &ActionButton::clicked, this, &OnboardingView::back);
    connect(m_next, &ActionButton::clicked, this, &OnboardingView::next);
    connect(m_getStarted, &ActionButton::clicked, this, &OnboardingView::finish);
    for (auto* button : findChildren<ActionButton*>()) {
        button->installEventFilter(this);
    }
    showStep(0);
}

QStackedWidget* OnboardingView::makePages() {
    auto* pages = new QStackedWidget;
    for (const OnboardingStep& step : onboardingSteps()) {
        pages->addWidget(new OnboardingPage(step, m_parts, m_actions));
    }
    return pages;
}

QGridLayout* OnboardingView::makeFoot() {
    m_back->setObjectName(u"back"_s);
    m_next->setObjectName(u"next"_s);
    m_getStarted->setObjectName(u"getStarted"_s);
    for (ActionButton* button : {m_back, m_next, m_getStarted}) {
        button->setFocusPolicy(Qt::TabFocus); // a click leaves the keys to the pages
    }
    auto* foot = new QGridLayout;
    foot->setColumnStretch(0, 1);
    foot->setColumnStretch(2, 1);
    foot->addWidget(m_back, 0, 0, Qt::AlignLeft);
    foot->addWidget(m_dots, 0, 1, Qt::AlignCenter);
    foot->addWidget(m_next, 0, 2, Qt::AlignRight);
    foot->addWidget(m_getStarted, 0, 2, Qt::AlignRight);
    return foot;
}

int OnboardingView::currentStep() const {
    return m_pages->currentIndex();
}

void OnboardingView::back() {
    if (currentStep() > 0) {
        showStep(currentStep() - 1);
    }
}

void OnboardingView::next() {
    if (currentStep() + 1 < m_pages->count()) {
        showStep(currentStep() + 1);
    }
}

void OnboardingView::finish() {
    m_parts.defaults.set(completedKey, true);
    close();
    Q_EMIT m_parts.events.showMainWindow();
}

void OnboardingView::showStep(int step) {
    const QWidget* focused = focusWidget();
    const bool isLast = step + 1 == m_pages->count();
    m_pages->setCurrentIndex(step);
    m_dots->setCurrent(step);
    m_back->setVisible(step > 0);
    m_next->setVisible(!isLast);
    m_getStarted->setVisible(isLast);

    const OnboardingStep& shown = onboardingSteps()[static_cast<size_t>(step)];
    setAccessibleName(shown.title);
    setAccessibleDescription(shown.description + u' ' + shown.description2.value_or(QString()));
    if (focused == nullptr || !focused->isVisibleTo(this)) {
        setFocus();
    }
}

bool OnboardingView::turnPage(int key) {
    if (key == Qt::Key_Left) {
        back();
    } else if (key == Qt::Key_Right) {
        next();
    }
    return key == Qt::Key_Left || key == Qt::Key_Right;
}

/// A button would use the arrow keys to move the focus, and ignore Enter.
bool OnboardingView::eventFilter(QObject* watched, QEvent* event) {
    auto* button = qobject_cast<ActionButton*>(watched);
    if (button == nullptr || event->type() != QEvent::KeyPress) {
        return QWidget::eventFilter(watched, event);
    }
    const auto* press = static_cast<QKeyEvent*>(event);
    if (isEnter(*press)) {
        button->click();
        return true;
    }
    return turnPage(press->key());
}

void OnboardingView::keyPressEvent(QKeyEvent* event) {
    if (isEnter(*event)) {
        (m_getStarted->isVisibleTo(this) ? m_getStarted : m_next)->click();
    } else if (!turnPage(event->key())) {
        QWidget::keyPressEvent(event);
    }
}

void OnboardingView::paintEvent(QPaintEvent*) {
    QPainter(this).fillRect(rect(), Theme::of(*this).card);
}

void OnboardingView::showEvent(QShowEvent* event) {
    if (!event->spontaneous()) {
        showStep(0);
    }
    QWidget::showEvent(event);
}

} // namespace ostrelle
