// SPDX-License-Identifier: GPL-3.0-or-later
#include "shell/panel/MenuContentView.h"

#include "product/ApiKey.h"
#include "shell/desktop/DroppedFiles.h"
#include "shell/panel/ActionsBar.h"
#include "shell/panel/AutoModeRow.h"
#include "shell/panel/ConfigurationCard.h"
#include "shell/panel/DropNotice.h"
#include "shell/panel/LastMessageLine.h"
#include "shell/panel/ProblemsSection.h"
#include "shell/panel/ProcessingCard.h"
#include "shell/panel/ProgressSection.h"
#include "shell/panel/SavingNotice.h"
#include "shell/panel/TeamCard.h"
#include "shell/toolkit/AccessibleView.h"
#include "shell/toolkit/ActionButton.h"
#include "shell/toolkit/NoticeBar.h"
#include "shell/toolkit/PanelFoot.h"
#include "shell/toolkit/Theme.h"

#include <QDropEvent>
#include <QHBoxLayout>
#include <QScrollArea>
#include <QScrollBar>
#include <QVBoxLayout>

namespace ostrelle {

using namespace Qt::StringLiterals;

namespace {

/// Why the panel does not take the files; empty if it does. A second run must not start: images are refused
/// until the first has ended, and all files while a question is open.
QString refusal(const QDropEvent& event, const DroppedFiles& files, const StatusStore& status,
                const PanelActions& actions) {
    if (files.kind == DroppedFiles::Kind::useless) {
        return files.words(SourceType::local);
    }
    if (!(event.possibleActions() & Qt::CopyAction)) {
        return u"These files can only be moved, which would take them from their place."_s;
    }
    if (actions.isAsking()) {
        return u"Answer the open question first."_s;
    }
    if (files.kind == DroppedFiles::Kind::images && status.isProcessing()) {
        return u"Other images are being captioned. Drop these when they are done."_s;
    }
    return {};
}

/// The sender keeps its files, whatever it proposes.
void acceptAsCopy(QDropEvent* event) {
    event->setDropAction(Qt::CopyAction);
    event->accept();
}

} // namespace

MenuContentView::MenuContentView(ShellParts parts, QWidget* parent)
    : QWidget(parent)
    , m_parts(parts)
    , m_actions(parts)
    , m_problems(parts, m_actions.roster())
    , m_dropNotice(new DropNotice(this)) {
    setObjectName(u"mainPanel"_s);
    setAccessibleRole(*this, QAccessible::Pane);
    setAccessibleName(u"Captioning"_s);
    setAcceptDrops(true);
    setFocusPolicy(Qt::ClickFocus);
    connect(&parts.events, &AppEvents::chooseWatchFolder, &m_actions, &PanelActions::chooseWatchFolder);
    auto* layout = new QVBoxLayout(this);
    layout->setContentsMargins(0, 0, 0, 0);
    layout->setSpacing(0);
    layout->addWidget(makeScroll(), 1);
    layout->addWidget(makeFoot());
}

QWidget* MenuContentView::makeScroll() {
    auto* scroll = new QScrollArea;
    scroll->setObjectName(u"settingsScroll"_s);
    scroll->setWidgetResizable(true);
    scroll->setFrameShape(QFrame::NoFrame);
    scroll->setHorizontalScrollBarPolicy(Qt::ScrollBarAlwaysOff);
    scroll->setFocusPolicy(Qt::NoFocus);
    QWidget* settings = makeSettings();
    settings->setMaximumWidth(widthForType(measure::widestColumn));
    scroll->setAlignment(Qt::AlignHCenter);
    scroll->setWidget(settings);
    scroll->setMinimumWidth(settings->minimumSizeHint().width());

    // A run's progress shows and hides the scroll bar, which takes its width from the margin, not the cards.
    QScrollBar* bar = scroll->verticalScrollBar();
    connect(bar, &QScrollBar::rangeChanged, settings, [bar, settings](int, int most) {
        QMargins margins = settings->layout()->contentsMargins();
        margins.setRight(measure::windowMargin - (most > 0 ? bar->sizeHint().width() : 0));
        settings->layout()->setContentsMargins(margins);
    });
    return scroll;
}

QWidget* MenuContentView::makeSettings() {
    auto* settings = new QWidget;
    auto* layout = new QVBoxLayout(settings);
    layout->setContentsMargins(measure::windowMargin, 12, measure::windowMargin, 12);
    layout->setSpacing(measure::cardSpacing);
    layout->addWidget(makeKeyNotice());
    layout->addWidget(m_savingNotice = new SavingNotice(m_parts.defaults, m_parts.clock, m_parts.console));
    layout->addWidget(makeManifestNotice());
    // Each card is made inside the page, which gives it its place among the existing tab stops.
    layout->addWidget(new ConfigurationCard(m_parts, m_actions, settings));
    layout->addWidget(new TeamCard(m_parts.settings, settings));
    layout->addWidget(new ProcessingCard(m_parts.settings, settings));
    layout->addStretch();
    return settings;
}

QWidget* MenuContentView::makeKeyNotice() {
    auto* notice = new NoticeBar(u"No API Key Set"_s, u"Settings"_s);
    notice->setObjectName(u"keyNotice"_s);
    notice->button()->setObjectName(u"keySettings"_s);
    connect(notice->button(), &QPushButton::clicked, &m_parts.events, &AppEvents::showSettingsWindow);
    const auto show = [notice, &settings = m_parts.settings] { notice->setVisible(!settings.hasAPIKey()); };
    connect(&m_parts.settings, &SettingsStore::hasAPIKeyChanged, notice, show);
    show();
    return notice;
}

/// This failure costs money: images are paid for again.
QWidget* MenuContentView::makeManifestNotice() {
    auto* notice = new NoticeBar({}, {});
    notice->setObjectName(u"manifestNotice"_s);
    const auto show = [notice, &status = m_parts.status] {
        const std::optional<QString> failure = status.manifestFailure();
        notice->setWords(u"Which images have been captioned could not be saved, so they may be captioned "
                         "again. %1"_s.arg(failure.value_or(QString())));
        notice->setVisible(failure.has_value());
    };
    connect(&m_parts.status, &StatusStore::manifestFailureChanged, notice, show);
    show();
    return notice;
}

QWidget* MenuContentView::makeFoot() {
    auto* foot = new PanelFoot;
    foot->addRow(new ProgressSection(m_parts, m_actions));
    foot->addRow(new LastMessageLine(m_parts.status));
    foot->addRow(new ProblemsSection(m_parts, m_actions, m_problems));
    foot->addBareRow(new AutoModeRow(m_parts, m_actions, m_problems));
    foot->addRow(new ActionsBar(m_parts, m_actions));
    foot->addBareRow(makeLinks());
    return foot;
}

QWidget* MenuContentView::makeLinks() {
    auto* feedback = new ActionButton(u"Send Feedback"_s, ActionKind::link);
    feedback->setObjectName(u"sendFeedback"_s);
    feedback->setText(u"Send &Feedback"_s);
    connect(feedback, &ActionButton::clicked, this,
            [this] { m_parts.workspace.openLink(m_parts.pages.feedback); });
    if (m_parts.pages.feedback.isEmpty()) {
        feedback->hide();
    }
    auto* help = new ActionButton(u"IPTC Help"_s, ActionKind::link);
    help->setObjectName(u"iptcHelp"_s);
    help->setText(u"&IPTC Help"_s);
    connect(help, &ActionButton::clicked, &m_parts.events, &AppEvents::showHelpWindow);

    auto* links = new QWidget;
    auto* layout = new QHBoxLayout(links);
    constexpr int ring = 3; // a link keeps room for its focus ring; its words align with the rest
    layout->setContentsMargins(measure::cardPadding - ring, 0, measure::cardPadding - ring, 0);
    for (ActionButton* link : {feedback, help}) {
        link->setFont(typeFont(TypeSize::small));
        layout->addWidget(link);
    }
    layout->insertStretch(1);
    return links;
}

void MenuContentView::showEvent(QShowEvent* event) {
    QWidget::showEvent(event);
    if (window()->focusWidget() == nullptr) {
        setFocus(); // else the first control would start with the ring and take stray keys
    }
}

void MenuContentView::changeEvent(QEvent* event) {
    QWidget::changeEvent(event);
    if (event->type() == QEvent::ActivationChange && isActiveWindow()) {
        // The user may meanwhile have put a roster there, freed disk space or stored a key in a terminal.
        m_actions.roster().lookAgain();
        m_savingNotice->tryAgain();
        m_parts.settings.setHasAPIKey(!apiKey(m_parts.defaults).isEmpty());
    }
}

/// Files that are refused enter, too: otherwise nobody would tell when they leave.
void MenuContentView::dragEnterEvent(QDragEnterEvent* event) {
    if (!event->mimeData()->hasUrls()) {
        event->ignore();
        return;
    }
    const DroppedFiles files = DroppedFiles::of(*event->mimeData());
    const QString reason = refusal(*event, files, m_parts.status, m_actions);
    if (reason.isEmpty()) {
        m_dropNotice->showOver(files.words(m_parts.settings.sourceType()), DropNotice::Welcome::yes);
    } else {
        m_dropNotice->showOver(reason, DropNotice::Welcome::no);
    }
    acceptAsCopy(event);
}

void MenuContentView::dragMoveEvent(QDragMoveEvent* event) {
    if (m_dropNotice->welcome() == DropNotice::Welcome::yes) {
        acceptAsCopy(event);
    } else {
        event->ignore();
    }
}

void MenuContentView::dragLeaveEvent(QDragLeaveEvent*) {
    m_dropNotice->hide();
}

void MenuContentView::dropEvent(QDropEvent* event) {
    m_dropNotice->hide();
    const DroppedFiles files = DroppedFiles::of(*event->mimeData());
    if (refusal(*event, files, m_parts.status, m_actions).isEmpty()) {
        acceptAsCopy(event);
        m_actions.take(files);
    }
}

} // namespace ostrelle
