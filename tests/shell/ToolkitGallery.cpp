// SPDX-License-Identifier: GPL-3.0-or-later
#include "shell/ToolkitGallery.h"

#include "core/Sport.h"
#include "shell/toolkit/ActionButton.h"
#include "shell/toolkit/Card.h"
#include "shell/toolkit/ColorSwatchPicker.h"
#include "shell/toolkit/CounterLabel.h"
#include "shell/toolkit/ElidedLabel.h"
#include "shell/toolkit/Icon.h"
#include "shell/toolkit/InfoButton.h"
#include "shell/toolkit/NoticeBar.h"
#include "shell/toolkit/Picker.h"
#include "shell/toolkit/ProgressLine.h"
#include "shell/toolkit/SecureField.h"
#include "shell/toolkit/SegmentedControl.h"
#include "shell/toolkit/SettingRow.h"
#include "shell/toolkit/StatusMark.h"
#include "shell/toolkit/Switch.h"
#include "shell/toolkit/Theme.h"

#include <QGridLayout>
#include <QHBoxLayout>
#include <QLabel>
#include <QLineEdit>
#include <QVBoxLayout>

namespace ostrelle {

using namespace Qt::StringLiterals;

namespace {

QWidget* named(QWidget* widget, const QString& name) {
    widget->setObjectName(name);
    return widget;
}

SettingRow* choiceOfFile(const QString& name, const QString& file) {
    auto* value = new ElidedLabel(file);
    value->setAlignment(Qt::AlignRight | Qt::AlignVCenter);
    value->setForegroundRole(QPalette::PlaceholderText);
    auto* row = new SettingRow(name, value);
    row->addControl(new ActionButton(u"Choose"_s));
    return row;
}

SettingRow* team(const QString& name, const QString& words, const QString& color) {
    auto* field = new QLineEdit(words);
    field->setMaximumWidth(150);
    auto* row = new SettingRow(name, field);
    auto* swatch = new ColorSwatchPicker;
    swatch->setColorName(color);
    swatch->setObjectName(color);
    row->addControl(swatch);
    return row;
}

QWidget* column(const QList<QWidget*>& parts) {
    auto* widget = new QWidget;
    auto* layout = new QVBoxLayout(widget);
    layout->setContentsMargins(0, 0, 0, 0);
    layout->setSpacing(measure::cardSpacing);
    for (QWidget* part : parts) {
        layout->addWidget(part);
    }
    layout->addStretch();
    return widget;
}

QWidget* line(const QList<QWidget*>& parts) {
    auto* widget = new QWidget;
    auto* layout = new QHBoxLayout(widget);
    layout->setContentsMargins(0, 0, 0, 0);
    layout->setSpacing(measure::controlSpacing);
    for (QWidget* part : parts) {
        layout->addWidget(part);
    }
    layout->addStretch();
    return widget;
}

QWidget* disabled(QWidget* widget) {
    widget->setEnabled(false);
    return widget;
}

} // namespace

ToolkitGallery::ToolkitGallery() {
    auto* layout = new QHBoxLayout(this);
    layout->setContentsMargins(14, 12, 14, 12);
    layout->setSpacing(20);
    layout->addWidget(column({settings(), foot()}));
    layout->addWidget(column({states(), signs()}));
    for (QWidget* part : {layout->itemAt(0)->widget(), layout->itemAt(1)->widget()}) {
        part->setFixedWidth(widthForType(452));
    }
}

QWidget* ToolkitGallery::settings() {
    auto* configuration = new Card(u"Configuration"_s);
    auto* source = new Picker;
    source->addItems({u"Local Folder"_s, u"FTP Server"_s});
    configuration->addRow(new SettingRow(u"Source:"_s, source));
    configuration->addRow(choiceOfFile(u"Select Watch Folder"_s, u"2025-10-26 UK–Tenn"_s));
    configuration->addRow(choiceOfFile(u"Select Code Replacements File"_s,
                                       u"code-replacements of the whole season, second try.txt"_s));
    auto* sport = new Picker;
    for (const Sport each : selectableSports()) {
        sport->addItem(icon(sportIcon(each)), label(each));
    }
    sport->setCurrentIndex(3);
    auto* sportRow = new SettingRow(u"Sport:"_s, named(sport, u"sport"_s));
    sportRow->setInfo(
        {u"Why Choose a Sport?"_s, {{u"The words that a caption uses depend on the sport."_s}}});
    configuration->addRow(sportRow);
    auto* audio = new Switch;
    auto* audioRow = new SettingRow(u"Prioritize Audio Files"_s, named(audio, u"audio"_s));
    audioRow->setInfo(
        {u"Prioritize Audio Files"_s,
         {{u"What is said in a voice memo beside an image goes before what the image shows."_s},
          {u"• A memo has the name of its image, and may stand in the same folder or in one beside it\n"
           u"• Images without a memo are captioned as ever"_s,
           u"When ENABLED:"_s},
          {u"✓ Manual image selection\n✓ Automatic folder watching"_s, u"Applies to:"_s}}});
    configuration->addRow(audioRow);

    auto* teams = new Card(u"Team and Player Identification"_s);
    auto* byColor = new Switch;
    byColor->setChecked(true);
    teams->addRow(new SettingRow(u"Identify by Jersey Color"_s, named(byColor, u"byColor"_s)));
    teams->addRow(team(u"Team 1 Name"_s, u"Kentucky"_s, u"Blue"_s));
    teams->addRow(team(u"Team 2 Name"_s, u"Tennessee"_s, u"Maroon"_s));
    auto* notice = new NoticeBar(u"No API Key Set"_s, u"Settings"_s);
    return column({notice, configuration, teams});
}

QWidget* ToolkitGallery::states() {
    auto* card = new Card(u"States"_s);
    auto* styles = new SegmentedControl({u"AP"_s, u"Getty"_s, u"Imagn"_s, u"Simple"_s}, u"style"_s);
    card->addRow(new SettingRow(u"Caption Style:"_s, styles));
    auto* password = new SecureField(u"password"_s);
    password->setText(u"sideline7"_s);
    card->addRow(new SettingRow(u"Password"_s, password));
    auto* rights = new Switch;
    auto* rightsRow = new SettingRow(
        u"Automatically Download/Caption New Images Added to FTP Server, With a Long Name"_s, rights);
    card->addRow(rightsRow);
    auto* credit = new SettingRow(u"Default Rights Fallback (optional)"_s, new Switch);
    auto* field = new QLineEdit;
    field->setPlaceholderText(u"e.g., AP Photo/John Smith"_s);
    credit->setSecondLine(field);
    card->addRow(credit);
    auto* off = new SettingRow(u"Not to be changed now"_s, disabled(new Switch));
    off->addControl(disabled(new Picker));
    off->setEnabled(false);
    card->addRow(off);
    card->addPaddedRow(
        makeLabel(u"Grey words that explain a group, over more than one line if they need it."_s,
                  TypeSize::small, TextTone::dim));
    auto* marks = new Card(u"How it stands"_s);
    marks->addPaddedRow(column({new StatusMark(StatusTone::good, u"Connection successful"_s),
                                new StatusMark(StatusTone::missing, u"Incomplete FTP settings"_s),
                                new StatusMark(StatusTone::destroying, u"The server refused the password"_s),
                                new StatusMark(StatusTone::plain, u"Waiting for captions"_s)}));
    return column({card, marks});
}

QWidget* ToolkitGallery::signs() {
    auto* widget = new QWidget;
    auto* grid = new QGridLayout(widget);
    grid->setContentsMargins(0, 0, 0, 0);
    constexpr int columns = 12;
    const int last = static_cast<int>(IconName::warning);
    for (int index = 0; index <= last; ++index) {
        auto* sign = new QLabel;
        sign->setPixmap(icon(static_cast<IconName>(index)).pixmap(QSize(24, 24), devicePixelRatio()));
        grid->addWidget(sign, index / columns, index % columns);
    }
    auto* application = new QWidget;
    auto* sizes = new QHBoxLayout(application);
    for (const int side : {128, 64, 48, 32, 22, 16}) {
        auto* sign = new QLabel;
        sign->setPixmap(applicationIcon().pixmap(QSize(side, side), devicePixelRatio()));
        sizes->addWidget(sign, 0, Qt::AlignBottom);
    }
    sizes->addStretch();
    return column({widget, application});
}

QWidget* ToolkitGallery::foot() {
    auto* most = new ProgressLine;
    most->setFraction(0.8);
    auto* some = new ProgressLine;
    some->setFraction(0.015);
    auto* counter = new CounterLabel(u"Auto Processing: On (next scan: 11s)"_s);
    return column(
        {makeLabel(u"Load Your Code Replacements File"_s, TypeSize::title), counter, most, some,
         named(new ActionButton(u"Select Images to Caption"_s, ActionKind::main, ActionSize::wide),
               u"main"_s),
         new ActionButton(u"Download & Caption ALL from FTP Server"_s, ActionKind::normal, ActionSize::wide),
         disabled(new ActionButton(u"Caption All Local Images"_s, ActionKind::normal, ActionSize::wide)),
         line({new ActionButton(u"Test Connection"_s, ActionKind::main), new ActionButton(u"Back"_s),
               new ActionButton(u"Clear FTP Settings"_s, ActionKind::destroying),
               new ActionButton(u"IPTC Help"_s, ActionKind::link)}),
         line({disabled(new ActionButton(u"Test Connection"_s, ActionKind::main)),
               disabled(new ActionButton(u"Back"_s)),
               disabled(new ActionButton(u"Clear FTP Settings"_s, ActionKind::destroying))})});
}

} // namespace ostrelle
