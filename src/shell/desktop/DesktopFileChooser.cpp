// SPDX-License-Identifier: GPL-3.0-or-later
#include "shell/desktop/DesktopFileChooser.h"

#include "shell/desktop/OwnerWindow.h"

#include <QApplication>
#include <QCoroSignal>
#include <QDir>
#include <QFileDialog>
#include <QPointer>

namespace ostrelle {

using namespace Qt::StringLiterals;

namespace {

const QString lastFolderKey = u"lastChosenFolder"_s;

/// Cameras write capitals, and the dialog may be case-sensitive.
QString nameFilter(const FileQuestion& question) {
    QStringList patterns;
    for (const QString& extension : question.extensions) {
        patterns.append(u"*."_s + extension.toLower());
        patterns.append(u"*."_s + extension.toUpper());
    }
    return u"%1 (%2)"_s.arg(question.extensionsName, patterns.join(u' '));
}

std::optional<QString> firstOf(const QStringList& paths) {
    return paths.isEmpty() ? std::nullopt : std::optional(paths.first());
}

} // namespace

QCoro::Task<std::optional<QString>> DesktopFileChooser::chooseFolder(FileQuestion question) {
    co_return firstOf(co_await ask(question, Choice::folder));
}

QCoro::Task<std::optional<QString>> DesktopFileChooser::chooseFile(FileQuestion question) {
    co_return firstOf(co_await ask(question, Choice::file));
}

QCoro::Task<QStringList> DesktopFileChooser::chooseFiles(FileQuestion question) {
    return ask(question, Choice::files);
}

QCoro::Task<QStringList> DesktopFileChooser::ask(FileQuestion question, Choice choice) {
    // The window below owns the dialog and may go first, when the program ends.
    const QPointer<QFileDialog> dialog =
        new QFileDialog(ownerWindow(), question.title, startFolder(question));
    dialog->setObjectName(u"fileChooser"_s);
    switch (choice) {
    case Choice::folder:
        dialog->setFileMode(QFileDialog::Directory);
        break;
    case Choice::file:
        dialog->setFileMode(QFileDialog::ExistingFile);
        break;
    case Choice::files:
        dialog->setFileMode(QFileDialog::ExistingFiles);
        break;
    }
    dialog->setOption(QFileDialog::ShowDirsOnly, choice == Choice::folder);
    if (!question.extensions.isEmpty()) {
        dialog->setOption(QFileDialog::HideNameFilterDetails); // these list each pattern twice
        dialog->setNameFilters({nameFilter(question), u"All files (*)"_s});
    }
    dialog->open();
    co_await qCoro(dialog.data(), &QFileDialog::finished);
    if (!dialog) {
        co_return {};
    }
    dialog->deleteLater();
    if (dialog->result() != QDialog::Accepted) {
        co_return {};
    }
    m_defaults.set(lastFolderKey, dialog->directory().absolutePath());
    QStringList paths;
    for (const QString& path : dialog->selectedFiles()) {
        paths.append(QDir(path).absolutePath());
    }
    co_return paths;
}

QString DesktopFileChooser::startFolder(const FileQuestion& question) const {
    return question.startFolder.isEmpty() ? m_defaults.get<QString>(lastFolderKey).value_or(QDir::homePath())
                                          : question.startFolder;
}

} // namespace ostrelle
