// SPDX-License-Identifier: GPL-3.0-or-later
#include "shell/toolkit/FileChoiceRow.h"

#include "shell/toolkit/ActionButton.h"
#include "shell/toolkit/ElidedLabel.h"
#include "shell/toolkit/Theme.h"

#include <QDir>
#include <QFileInfo>

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
    if (m_note == nullptr && !words.isEmpty()) {
        m_note = new StatusMark;
        m_note->setFont(typeFont(TypeSize::small));
        m_note->setWordWrap(true);
        m_note->setObjectName(m_value->objectName() + u"Note"_s);
        setSecondLine(m_note);
    }
    if (m_note != nullptr) {
        m_note->setStatus(tone, words);
        m_note->setVisible(!words.isEmpty());
    }
}

void FileChoiceRow::setPath(const std::optional<QString>& path) {
    m_value->setText(path ? nameOf(*path) : u"None"_s);
    m_value->setToolTip(path ? QDir::toNativeSeparators(*path) : QString());
}

} // namespace ostrelle
