// SPDX-License-Identifier: GPL-3.0-or-later
#include "shell/panel/GameRow.h"

#include "shell/toolkit/Picker.h"
#include "state/PanelProgress.h"

#include <QDate>
#include <QDir>
#include <QInputDialog>

namespace ostrelle {

using namespace Qt::StringLiterals;

namespace {

/// What an item of the picker does, as its data.
enum class GameChoice { game, begin, remove };

Picker* makePicker() {
    auto* picker = new Picker;
    picker->setObjectName(u"game"_s);
    picker->setPlaceholderText(u"None"_s);
    picker->setSizeAdjustPolicy(QComboBox::AdjustToMinimumContentsLengthWithIcon); // names may be long
    constexpr int shortestLength = 12;
    picker->setMinimumContentsLength(shortestLength);
    picker->setSizePolicy(QSizePolicy::Expanding, QSizePolicy::Fixed);
    return picker;
}

Alert removeQuestion(const QString& name) {
    Alert alert;
    alert.title = u"Remove “%1”?"_s.arg(name);
    alert.text = u"Its settings are forgotten. Folders, images and captions stay as they are."_s;
    alert.buttons = QStringList{u"Cancel"_s, u"Remove"_s};
    alert.destroyingButton = 1;
    return alert;
}

} // namespace

GameRow::GameRow(ShellParts parts, QWidget* parent) : GameRow(parts, makePicker(), parent) {}

GameRow::GameRow(ShellParts parts, Picker* picker, QWidget* parent)
    : SettingRow(u"Game:"_s, picker, parent)
    , m_parts(parts)
    , m_games(new Games(parts.defaults, parts.settings, this))
    , m_picker(picker) {
    connect(m_picker, &Picker::activated, this, &GameRow::choose);
    connect(m_games, &Games::changed, this, &GameRow::showGames);
    for (const auto changed : {&StatusStore::isProcessingChanged, &StatusStore::queueChanged,
                               &StatusStore::ftpIsDownloadingChanged}) {
        connect(&parts.status, changed, this, &GameRow::showState);
    }
    showGames();
    showState();
}

void GameRow::showGames() {
    m_picker->clear();
    const QStringList names = m_games->names();
    for (const QString& name : names) {
        m_picker->addItem(name, static_cast<int>(GameChoice::game));
    }
    if (!names.isEmpty()) {
        m_picker->insertSeparator(m_picker->count());
    }
    m_picker->addItem(u"New Game…"_s, static_cast<int>(GameChoice::begin));
    if (!m_games->current().isEmpty()) {
        m_picker->addItem(u"Remove “%1”…"_s.arg(m_games->current()), static_cast<int>(GameChoice::remove));
    }
    m_picker->setCurrentIndex(static_cast<int>(names.indexOf(m_games->current())));
}

void GameRow::showState() {
    const bool isBusy = hasWork(m_parts.status) || m_parts.status.ftpIsDownloading();
    m_picker->setEnabled(!isBusy);
    m_picker->setToolTip(isBusy ? u"The game can be changed when no image is being captioned."_s : QString());
}

void GameRow::choose() {
    const QString name = m_picker->currentText();
    const auto choice = static_cast<GameChoice>(m_picker->currentData().toInt());
    m_picker->setCurrentIndex(static_cast<int>(m_games->names().indexOf(m_games->current())));
    switch (choice) {
    case GameChoice::game:
        m_games->recall(name);
        break;
    case GameChoice::begin:
        askForName();
        break;
    case GameChoice::remove:
        askToRemove(m_parts, m_games, m_games->current());
        break;
    }
}

void GameRow::askForName() {
    auto* dialog = new QInputDialog(window());
    dialog->setObjectName(u"newGame"_s);
    dialog->setAttribute(Qt::WA_DeleteOnClose);
    dialog->setWindowTitle(u"New Game"_s);
    dialog->setLabelText(m_games->current().isEmpty()
                             ? u"Name of the game. It takes the settings as they are now."_s
                             : u"Name of the game. Choose its folder, code replacements and teams next."_s);
    const QString folder = QDir(m_parts.settings.ingestFolder().value_or(QString())).dirName();
    const bool isFirst = m_games->current().isEmpty() && m_parts.settings.ingestFolder();
    dialog->setTextValue(isFirst ? folder : m_parts.clock.now().date().toString(Qt::ISODate));
    dialog->setOkButtonText(u"Begin"_s);
    connect(dialog, &QInputDialog::textValueSelected, this, &GameRow::begin);
    dialog->open();
}

/// Work may have begun while the name was typed.
void GameRow::begin(const QString& typed) {
    const QString name = typed.simplified().left(Games::longestName);
    if (name.isEmpty() || !m_picker->isEnabled()) {
        return;
    }
    QString free = name;
    for (int number = 2; m_games->names().contains(free); ++number) {
        free = u"%1 (%2)"_s.arg(name).arg(number);
    }
    m_games->begin(free);
}

QCoro::Task<> GameRow::askToRemove(ShellParts parts, QPointer<Games> games, QString name) {
    const Alert question = removeQuestion(name);
    const QString answer = co_await parts.alerts.show(question);
    if (games && answer == question.buttons.last()) {
        games->remove(name);
    }
}

} // namespace ostrelle
