// SPDX-License-Identifier: GPL-3.0-or-later
#include "shell/panel/ConfigurationCard.h"

#include "shell/panel/GameRow.h"
#include "shell/panel/PanelActions.h"
#include "shell/toolkit/ActionButton.h"
#include "shell/toolkit/ElidedLabel.h"
#include "shell/toolkit/FileChoiceRow.h"
#include "shell/toolkit/Icon.h"
#include "shell/toolkit/Picker.h"
#include "shell/toolkit/SettingBinding.h"
#include "shell/toolkit/StatusMark.h"
#include "shell/toolkit/Theme.h"
#include "state/RecentPaths.h"

#include <QHBoxLayout>
#include <optional>

namespace ostrelle {

using namespace Qt::StringLiterals;

namespace {

const InfoText destinationInfo{
    u"FTP Destination Folder"_s,
    {{u"Files will be downloaded from the FTP server to this folder for local editing and captioning."_s}}};

const InfoText sportInfo{
    u"Why Choose a Sport?"_s,
    {{u"Each sport has its own words for positions, plays and places. The AI is told which sport it sees, so "
      "that the captions use the right ones."_s}}};

const InfoText audioInfo{
    u"Prioritize Audio Files"_s,
    {{u"An audio file beside an image, with the same name, is your voice note on it. It is transcribed and "
      "told to the AI."_s},
     {u"• What you say decides what the caption tells"_s, u"When ENABLED:"_s},
     {u"• The note is context only: the caption tells what the image shows"_s,
      u"When DISABLED (default):"_s}}};

using SetPath = void (SettingsStore::*)(const std::optional<QString>&);

/// Shows a path of the settings and those before it, and follows their changes.
void follow(FileChoiceRow* row, ShellParts parts, const RecentPaths::Source& source, SetPath set) {
    SettingsStore& settings = parts.settings;
    const auto* recent = new RecentPaths(parts.defaults, settings, source, row);
    const auto show = [row, recent, &settings, path = source.path] {
        row->setPath((settings.*path)());
        row->setRecent(recent->others());
    };
    show();
    QObject::connect(recent, &RecentPaths::changed, row, show);
    QObject::connect(row, &FileChoiceRow::chosen, row,
                     [&settings, set](const QString& path) { (settings.*set)(path); });
}

/// What the row says when nothing is chosen, and no image can be captioned.
const QString neededNote = u"Needed for captions"_s;

/// Says that the folder is needed while there is none.
void noteNeed(FileChoiceRow* row, SettingsStore& settings,
              std::optional<QString> (SettingsStore::*path)() const, void (SettingsStore::*changed)()) {
    const auto show = [=, &settings] {
        row->setNote((settings.*path)() ? QString() : neededNote, StatusTone::missing);
    };
    show();
    QObject::connect(&settings, changed, row, show);
}

} // namespace

ConfigurationCard::ConfigurationCard(ShellParts parts, PanelActions& actions, QWidget* parent)
    : Card(u"Configuration"_s, parent), m_parts(parts), m_actions(actions) {
    setObjectName(u"configuration"_s);
    addRow(new GameRow(parts));
    addSource();
    addFolders();
    addRoster();
    addSport();
    addStyle();
    addAudio();
    showSource();
}

void ConfigurationCard::addSource() {
    m_source = new Picker;
    m_source->setObjectName(u"source"_s);
    for (const auto& row : rawValueRows<SourceType>()) {
        m_source->addItem(row.label.toString(), static_cast<int>(row.value));
    }
    addRow(new SettingRow(u"Source:"_s, m_source));
    connect(m_source, &Picker::activated, this, [this] {
        m_parts.settings.setSourceType(static_cast<SourceType>(m_source->currentData().toInt()));
    });
    connect(&m_parts.settings, &SettingsStore::sourceTypeChanged, this, &ConfigurationCard::showSource);
}

void ConfigurationCard::addFolders() {
    SettingsStore& settings = m_parts.settings;
    m_watchFolder = new FileChoiceRow(u"Select Watch Folder"_s, u"watchFolder"_s);
    follow(m_watchFolder, m_parts,
           {u"recentIngestFolders"_s, &SettingsStore::ingestFolder, &SettingsStore::ingestFolderChanged},
           &SettingsStore::setIngestFolder);
    noteNeed(m_watchFolder, settings, &SettingsStore::ingestFolder, &SettingsStore::ingestFolderChanged);
    connect(m_watchFolder, &FileChoiceRow::choosing, &m_actions, &PanelActions::chooseWatchFolder);
    addRow(m_watchFolder);

    addHost();
    m_destinationFolder = new FileChoiceRow(u"Select Destination Folder"_s, u"destinationFolder"_s);
    follow(m_destinationFolder, m_parts,
           {u"recentDestinationFolders"_s, &SettingsStore::destinationFolder,
            &SettingsStore::destinationFolderChanged},
           &SettingsStore::setDestinationFolder);
    noteNeed(m_destinationFolder, settings, &SettingsStore::destinationFolder,
             &SettingsStore::destinationFolderChanged);
    connect(m_destinationFolder, &FileChoiceRow::choosing, &m_actions,
            &PanelActions::chooseDestinationFolder);
    addRow(m_destinationFolder);
    m_destinationFolder->explain(destinationInfo);
}

void ConfigurationCard::addRoster() {
    m_roster = new FileChoiceRow(u"Select Code Replacements File"_s, u"codeReplacements"_s);
    follow(m_roster, m_parts,
           {u"recentCodeReplacementsFiles"_s, &SettingsStore::codeReplacementsFile,
            &SettingsStore::codeReplacementsFileChanged},
           &SettingsStore::setCodeReplacementsFile);
    connect(m_roster, &FileChoiceRow::choosing, &m_actions, &PanelActions::chooseCodeReplacements);
    connect(m_roster, &FileChoiceRow::linkClicked, &m_actions, &PanelActions::showRoster);
    addRow(m_roster);
    showRoster();
    connect(&m_actions.roster(), &RosterWatch::useChanged, this, &ConfigurationCard::showRoster);
}

void ConfigurationCard::showRoster() {
    const RosterWatch& watch = m_actions.roster();
    const bool isNeeded = !m_parts.settings.codeReplacementsFile() && !watch.isUsed();
    if (const QString problem = watch.problem(); !problem.isEmpty()) {
        m_roster->setNote(problem, StatusTone::missing);
    } else if (isNeeded) {
        m_roster->setNote(watch.isLooking() ? QString() : neededNote, StatusTone::missing);
    } else {
        m_roster->setNote(watch.isUsed() ? rosterOfFolderUsed() : QString());
    }
    const qsizetype entries = watch.entries();
    m_roster->setLink(entries == 0 ? QString() : entries == 1 ? u"1 entry"_s : u"%1 entries"_s.arg(entries));
}

void ConfigurationCard::addHost() {
    m_hostRow = new QWidget;
    m_hostRow->setMinimumHeight(measure::rowHeight);
    m_host = new ElidedLabel;
    m_host->setObjectName(u"ftpHost"_s);
    m_hostMissing = new StatusMark(StatusTone::missing, u"Incomplete FTP settings"_s);
    m_hostMissing->setObjectName(u"ftpIncomplete"_s);
    auto* button = new ActionButton(u"Settings"_s);
    button->setObjectName(u"ftpSettings"_s);
    button->setAccessibleDescription(u"FTP Server"_s);
    connect(button, &ActionButton::clicked, &m_parts.events, &AppEvents::showServerSettings);

    auto* line = new QHBoxLayout(m_hostRow);
    line->setContentsMargins(measure::cardPadding, 4, measure::cardPadding, 4);
    line->setSpacing(measure::controlSpacing);
    line->addWidget(m_host, 1);
    line->addWidget(m_hostMissing, 1);
    line->addWidget(button);
    addRow(m_hostRow);
    showHost();
    connect(&m_parts.settings, &SettingsStore::ftpHostChanged, this, &ConfigurationCard::showHost);
}

void ConfigurationCard::addSport() {
    m_sport = new Picker;
    m_sport->setObjectName(u"sport"_s);
    for (const Sport sport : selectableSports()) {
        m_sport->addItem(icon(sportIcon(sport)), label(sport), static_cast<int>(sport));
    }
    auto* row = new SettingRow(u"Sport:"_s, m_sport);
    addRow(row);
    row->setInfo(sportInfo);
    showSport();
    connect(m_sport, &Picker::activated, this,
            [this] { m_parts.settings.setSport(static_cast<Sport>(m_sport->currentData().toInt())); });
    connect(&m_parts.settings, &SettingsStore::sportChanged, this, &ConfigurationCard::showSport);
}

void ConfigurationCard::addStyle() {
    auto* style = new Picker; // narrower than the segments of the settings
    style->setObjectName(u"panelCaptionStyle"_s);
    for (const auto& row : rawValueRows<CaptionStyle>()) {
        style->addItem(row.label.toString(), static_cast<int>(row.value));
    }
    addRow(new SettingRow(u"Caption Style:"_s, style));
    const auto show = [style, &settings = m_parts.settings] {
        style->setCurrentIndex(style->findData(static_cast<int>(settings.captionStyle())));
    };
    show();
    connect(&m_parts.settings, &SettingsStore::captionStyleChanged, style, show);
    connect(style, &Picker::activated, &m_parts.settings, [style, &settings = m_parts.settings] {
        settings.setCaptionStyle(static_cast<CaptionStyle>(style->currentData().toInt()));
    });
}

void ConfigurationCard::addAudio() {
    auto* audio = new Switch;
    audio->setObjectName(u"prioritizeAudioFiles"_s);
    auto* row = new SettingRow(u"Prioritize Audio Files"_s, audio);
    addRow(row);
    row->setInfo(audioInfo);
    bindSetting(audio, m_parts.settings,
                {&SettingsStore::prioritizeAudioFiles, &SettingsStore::setPrioritizeAudioFiles,
                 &SettingsStore::prioritizeAudioFilesChanged});
}

void ConfigurationCard::showSource() {
    const SourceType source = m_parts.settings.sourceType();
    m_source->setCurrentIndex(m_source->findData(static_cast<int>(source)));
    m_watchFolder->setVisible(source == SourceType::local);
    m_hostRow->setVisible(source == SourceType::ftp);
    m_destinationFolder->setVisible(source == SourceType::ftp);
}

void ConfigurationCard::showHost() {
    const QString host = m_parts.settings.ftpHost();
    m_host->setText(host);
    m_host->setVisible(!host.isEmpty());
    m_hostMissing->setVisible(host.isEmpty());
}

void ConfigurationCard::showSport() {
    const Sport sport = m_parts.settings.sport();
    m_sport->setPlaceholderText(label(sport)); // for a stored sport that the picker does not list
    m_sport->setCurrentIndex(m_sport->findData(static_cast<int>(sport)));
}

} // namespace ostrelle
