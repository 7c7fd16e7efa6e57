// SPDX-License-Identifier: GPL-3.0-or-later
#include "shell/panel/ProblemsSection.h"

#include "core/Text.h"
#include "shell/panel/PanelActions.h"
#include "shell/toolkit/ActionButton.h"
#include "shell/toolkit/ElidedLabel.h"
#include "shell/toolkit/Icon.h"
#include "shell/toolkit/StatusMark.h"

#include <QFileInfo>
#include <QHBoxLayout>
#include <QToolButton>
#include <QVBoxLayout>

namespace ostrelle {

using namespace Qt::StringLiterals;
using Remedy = Problem::Remedy;

namespace {

QString nameOf(Remedy remedy) {
    switch (remedy) {
    case Remedy::tryAgain:
        return u"Try Again"_s;
    case Remedy::openSettings:
    case Remedy::openServerSettings:
        return u"Open Settings"_s;
    case Remedy::chooseFolder:
        return u"Choose Folder"_s;
    case Remedy::chooseRoster:
        return u"Choose File"_s;
    case Remedy::openFolder:
        return u"Open Folder"_s;
    }
    return {};
}

QStringList namesOf(const QStringList& files) {
    QStringList names;
    for (const QString& file : files) {
        names.append(QFileInfo(file).fileName());
    }
    return names;
}

} // namespace

ProblemsSection::ProblemsSection(ShellParts parts, PanelActions& actions, const Problems& problems,
                                 QWidget* parent)
    : QWidget(parent), m_parts(parts), m_actions(actions), m_problems(problems) {
    setObjectName(u"problems"_s);
    setAccessibleName(u"Problems"_s);
    auto* layout = new QVBoxLayout(this);
    layout->setContentsMargins(0, 4, 0, 4);
    layout->setSpacing(measure::controlSpacing);
    connect(&problems, &Problems::changed, this, &ProblemsSection::showProblems);
    // What was tried again is being worked on: a second run must not start.
    connect(&parts.status, &StatusStore::isProcessingChanged, this, &ProblemsSection::showProblems);
    showProblems();
}

void ProblemsSection::showProblems() {
    constexpr qsizetype mostShown = 3; // the panel's other rows must stay in sight
    while (QLayoutItem* item = layout()->takeAt(0)) {
        item->widget()->hide();
        item->widget()->deleteLater(); // its button may have just been pressed
        delete item;
    }
    const QList<Problem>& problems = m_problems.list();
    const auto add = [this](QWidget* row) {
        layout()->addWidget(row);
        row->show(); // the layout would do so later, which shows as a flicker
    };
    for (const Problem& problem : problems.first(std::min(problems.size(), mostShown))) {
        add(makeRow(problem));
    }
    if (problems.size() > mostShown) {
        add(makeMore(problems.size() - mostShown));
    }
    setVisible(!problems.isEmpty());
}

QWidget* ProblemsSection::makeRow(const Problem& problem) {
    auto* row = new QWidget;
    row->setObjectName(u"problem"_s);
    auto* words =
        new StatusMark(problem.isFailure ? StatusTone::destroying : StatusTone::missing, problem.words);
    words->setObjectName(u"problemWords"_s);
    words->setWordWrap(true);
    words->setTextInteractionFlags(Qt::TextSelectableByMouse);
    const bool isShort = problem.files.isEmpty();
    auto* layout = new QBoxLayout(isShort ? QBoxLayout::LeftToRight : QBoxLayout::TopToBottom, row);
    layout->setContentsMargins(0, 0, 0, 0);
    layout->setSpacing(isShort ? measure::controlSpacing : 3);
    layout->addWidget(words, isShort ? 1 : 0);
    layout->addLayout(makeActions(problem));
    return row;
}

QWidget* ProblemsSection::makeMore(qsizetype count) {
    auto* more = new QWidget;
    auto* layout = new QHBoxLayout(more);
    layout->setContentsMargins(0, 0, 0, 0);
    layout->addWidget(
        makeLabel(u"And %1 more, which the log tells."_s.arg(count), TypeSize::small, TextTone::dim), 1);
    auto* log = new ActionButton(u"Show Log"_s);
    connect(log, &ActionButton::clicked, &m_actions, &PanelActions::showLog);
    layout->addWidget(log);
    return more;
}

QLayout* ProblemsSection::makeActions(const Problem& problem) {
    auto* line = new QHBoxLayout;
    line->setSpacing(measure::controlSpacing);
    if (!problem.files.isEmpty()) {
        constexpr qsizetype mostNamed = 50;
        const QStringList names = namesOf(problem.files);
        auto* files = new ElidedLabel(shortNameList(names), Qt::ElideMiddle);
        files->setObjectName(u"problemFiles"_s);
        files->setFont(typeFont(TypeSize::small));
        files->setForegroundRole(QPalette::PlaceholderText);
        files->setToolTip(names.mid(0, mostNamed).join(u'\n'));
        line->addWidget(files, 1);
        auto* dismiss = new ActionButton(u"Dismiss"_s, ActionKind::link);
        dismiss->setObjectName(u"dismiss"_s);
        dismiss->setAccessibleDescription(problem.words);
        connect(dismiss, &ActionButton::clicked, &m_parts.failures,
                [&failures = m_parts.failures, reason = problem.reason] { failures.letGo(reason); });
        line->addWidget(dismiss);
    }
    for (const Remedy remedy : problem.remedies) {
        auto* button = new ActionButton(nameOf(remedy));
        button->setObjectName(u"remedy"_s);
        button->setAccessibleDescription(problem.words);
        button->setEnabled(remedy != Remedy::tryAgain || !m_parts.status.isProcessing());
        connect(button, &ActionButton::clicked, &m_actions,
                [&actions = m_actions, problem, remedy] { actions.help(problem, remedy); });
        line->addWidget(button);
    }
    return line;
}

} // namespace ostrelle
