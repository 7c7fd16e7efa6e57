// SPDX-License-Identifier: GPL-3.0-or-later
#include "shell/settings/CaptioningTab.h"

#include "shell/toolkit/CaptionStyleControl.h"
#include "shell/toolkit/Card.h"
#include "shell/toolkit/Icon.h"
#include "shell/toolkit/Picker.h"
#include "shell/toolkit/SettingBinding.h"
#include "shell/toolkit/SettingRow.h"
#include "shell/toolkit/Theme.h"

#include <QAction>
#include <QLineEdit>
#include <QVBoxLayout>

namespace ostrelle {

using namespace Qt::StringLiterals;

namespace {

const InfoText fallbackInfo{
    u"Fallback Behavior"_s,
    {{u"• If the AI cannot confidently identify the subject or action, it returns an empty caption\n"
      "• Only provides a caption when it can clearly describe what's happening\n"
      "• Best for strict workflows where blank is better than uncertain"_s,
      u"Leave Caption Field Blank:"_s},
     {u"• Always attempts to write a descriptive caption, even without player identification\n"
      "• Focuses on action, context, and subjects visible\n"
      "• Best for workflows where some caption is better than none"_s,
      u"Attempt to Write a Caption:"_s}}};

const InfoText creditInfo{u"Append Credit to Caption"_s,
                          {{u"• The copyright/credit (from IPTC Rights field or fallback above) will be "
                            "appended to the end of each caption\n"
                            "• Example: \"Player shoots the ball. Photo by John Doe\""_s,
                            u"When Enabled:"_s},
                           {u"• The copyright remains in the IPTC Rights field only\n"
                            "• It will NOT be added to the caption text\n"
                            "• Useful when your workflow adds credits separately"_s,
                            u"When Disabled:"_s}}};

const QString rightsFallbackName = u"Default Rights Fallback (optional)"_s;

const InfoText rightsFallbackInfo{
    u"Default Rights Fallback"_s,
    {{u"Used only when the XMP Rights field is empty. The exact text entered here will be appended to "
      "captions as the credit line."_s},
     {u"If left blank, no fallback credit will be added when the Rights field is empty."_s}}};

} // namespace

CaptioningTab::CaptioningTab(SettingsStore& settings, QWidget* parent)
    : QWidget(parent), m_settings(settings) {
    setObjectName(u"captioningTab"_s);
    auto* layout = new QVBoxLayout(this);
    layout->setContentsMargins(0, 0, 0, 0);
    layout->setSpacing(measure::cardSpacing);
    auto* style = new Card(u"Style"_s, this);
    layout->addWidget(style);
    addStyle(*style);
    addFallbackBehavior(*style);
    auto* credit = new Card(u"Credit"_s, this);
    layout->addWidget(credit);
    addCredit(*credit);
    addRightsFallback(*credit);
    layout->addStretch(1);
}

void CaptioningTab::addStyle(Card& card) {
    card.addRow(new SettingRow(u"Caption Style:"_s, new CaptionStyleControl(m_settings, u"captionStyle"_s)));
}

void CaptioningTab::addFallbackBehavior(Card& card) {
    auto* behavior = new Picker;
    behavior->setObjectName(u"fallbackBehavior"_s);
    for (const auto& row : rawValueRows<FallbackBehavior>()) {
        behavior->addItem(row.label.toString(), static_cast<int>(row.value));
    }
    auto* row = new SettingRow(u"Fallback Behavior:"_s, behavior);
    card.addRow(row);
    row->setInfo(fallbackInfo);
    const auto show = [behavior, &settings = m_settings] {
        behavior->setCurrentIndex(behavior->findData(static_cast<int>(settings.fallbackBehavior())));
    };
    show();
    connect(&m_settings, &SettingsStore::fallbackBehaviorChanged, behavior, show);
    connect(behavior, &Picker::activated, &m_settings, [behavior, &settings = m_settings] {
        settings.setFallbackBehavior(static_cast<FallbackBehavior>(behavior->currentData().toInt()));
    });
}

void CaptioningTab::addCredit(Card& card) {
    auto* append = new Switch;
    append->setObjectName(u"appendCreditToCaption"_s);
    auto* row = new SettingRow(u"Append Credit to Caption"_s, append);
    card.addRow(row);
    row->setInfo(creditInfo);
    bindSetting(append, m_settings,
                {&SettingsStore::appendCreditToCaption, &SettingsStore::setAppendCreditToCaption,
                 &SettingsStore::appendCreditToCaptionChanged});
}

void CaptioningTab::addRightsFallback(Card& card) {
    auto* field = new QLineEdit;
    field->setObjectName(u"defaultRightsFallback"_s);
    field->setPlaceholderText(u"e.g., AP Photo/John Smith"_s);
    field->setAccessibleName(rightsFallbackName);
    QAction* check = field->addAction(icon(IconName::check, &Theme::good), QLineEdit::TrailingPosition);
    check->setObjectName(u"defaultRightsFallbackSet"_s);
    check->setToolTip(u"A fallback is set"_s);

    auto* info = new InfoButton(rightsFallbackInfo);
    info->setObjectName(u"defaultRightsFallbackInfo"_s);
    auto* row = new SettingRow(rightsFallbackName, info);
    row->setSecondLine(field);
    card.addRow(row);
    bindSetting(field, m_settings,
                {&SettingsStore::defaultRightsFallback, &SettingsStore::setDefaultRightsFallback,
                 &SettingsStore::defaultRightsFallbackChanged});
    const auto mark = [check](const QString& text) { check->setVisible(!text.isEmpty()); };
    mark(field->text());
    connect(field, &QLineEdit::textChanged, check, mark);
}

} // namespace ostrelle
