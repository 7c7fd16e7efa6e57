// SPDX-License-Identifier: GPL-3.0-or-later
#include "shell/toolkit/FileChoiceRow.h"

#include "shell/toolkit/ActionButton.h"
#include "shell/toolkit/ElidedLabel.h"
#include "shell/toolkit/Icon.h"
#include "shell/toolkit/Theme.h"

#include <QDir>
#include <QFileInfo>
#include <QHBoxLayout>
#include <QMenu>

namespace ostrelle {

using namespace Qt::StringLiterals;

namespace {

ElidedLabel* makeValue(const QString& objectName) {
    auto* value = new ElidedLabel;
    value->setObjectName(objectName);
    value->setAlignment(Qt::AlignRight | Qt::AlignVCenter);
    value->setForegroundRole(QPalette::PlaceholderText);
    return value;
}

/// The name of the file or folder; a path without one, such as "/", is its own name.
QString nameOf(const QString& path) {
    const QString name = QFileInfo(QDir::cleanPath(path)).fileName();
    return name.isEmpty() ? path : name;
}

} // namespace

FileChoiceRow::FileChoiceRow(const QString& name, const QString& objectName, QWidget* parent)
    : FileChoiceRow(name, makeValue(objectName), parent) {}

FileChoiceRow::FileChoiceRow(const QString& name, ElidedLabel* value, QWidget* parent)
    : SettingRow(name, value, parent), m_value(value), m_choose(new ActionButton(u"Choose"_s)) {
    m_choose->setObjectName(value->objectName() + u"Choose"_s);
    addControl(m_choose);
    connect(m_choose, &ActionButton::clicked, this, &FileChoiceRow::choosing);
    setPath(std::nullopt);
}

void FileChoiceRow::explain(const InfoText& text) {
    setTabOrder(setInfo(text), m_choose);
}

void FileChoiceRow::setNote(const QString& words, StatusTone tone) {
    m_noteWords = words;
    m_noteTone = tone;
    showSecondLine();
}

void FileChoiceRow::setLink(const QString& words) {
    m_linkWords = words;
    showSecondLine();
}

void FileChoiceRow::showSecondLine() {
    const bool isOffered = m_linkWords.isEmpty() && !m_hasPath && !m_recentPaths.isEmpty();
    const QString link = isOffered ? u"Use “%1” Again"_s.arg(nameOf(m_recentPaths.first())) : m_linkWords;
    if (m_secondLine == nullptr && m_noteWords.isEmpty() && link.isEmpty()) {
        return;
    }
    makeSecondLine();
    m_note->setStatus(m_noteTone, m_noteWords);
    m_note->setVisible(!m_noteWords.isEmpty());
    m_link->setWords(link);
    m_link->setVisible(!link.isEmpty());
    m_secondLine->setVisible(!m_noteWords.isEmpty() || !link.isEmpty());
}

void FileChoiceRow::makeSecondLine() {
    if (m_secondLine != nullptr) {
        return;
    }
    m_note = new StatusMark;
    m_note->setFont(typeFont(TypeSize::small));
    m_note->setWordWrap(true);
    m_note->setObjectName(m_value->objectName() + u"Note"_s);
    m_link = new ActionButton({}, ActionKind::link);
    m_link->setFont(typeFont(TypeSize::small));
    m_link->setObjectName(m_value->objectName() + u"Link"_s);
    m_link->setAccessibleDescription(name());
    m_link->hide();
    connect(m_link, &ActionButton::clicked, this,
            [this] { m_linkWords.isEmpty() ? Q_EMIT chosen(m_recentPaths.value(0)) : Q_EMIT linkClicked(); });
    m_secondLine = new QWidget;
    auto* layout = new QHBoxLayout(m_secondLine);
    layout->setContentsMargins(0, 0, 0, 0);
    layout->setSpacing(measure::controlSpacing);
    layout->addWidget(m_note, 1);
    layout->addWidget(m_link, 0, Qt::AlignRight);
    setSecondLine(m_secondLine);
}

void FileChoiceRow::setRecent(const QStringList& paths) {
    m_recentPaths = paths;
    showSecondLine();
    if (m_recent == nullptr && paths.isEmpty()) {
        return;
    }
    if (m_recent == nullptr) {
        m_recent = new ActionButton({}, ActionKind::menu);
        m_recent->setIcon(icon(IconName::chevronDown));
        m_recent->setIconSize({12, 12});
        m_recent->setObjectName(m_value->objectName() + u"Recent"_s);
        m_recent->setAccessibleName(u"Recent"_s);
        m_recent->setToolTip(u"Recent"_s);
        m_recent->setMenu(new QMenu(m_recent));
        addControl(m_recent);
        m_recent->setAccessibleDescription(name());
    }
    m_recent->menu()->clear();
    for (const QString& path : paths) {
        QAction* action = m_recent->menu()->addAction(nameOf(path).replace(u'&', u"&&"_s));
        action->setToolTip(QDir::toNativeSeparators(path));
        connect(action, &QAction::triggered, this, [this, path] { Q_EMIT chosen(path); });
    }
    m_recent->menu()->setToolTipsVisible(true);
    m_recent->setVisible(!paths.isEmpty());
}

void FileChoiceRow::setPath(const std::optional<QString>& path) {
    m_value->setText(path ? nameOf(*path) : u"None"_s);
    m_value->setToolTip(path ? QDir::toNativeSeparators(*path) : QString());
    m_hasPath = path.has_value();
    showSecondLine();
}

} // namespace ostrelle
