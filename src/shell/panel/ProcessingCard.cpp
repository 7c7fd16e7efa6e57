// SPDX-License-Identifier: GPL-3.0-or-later
#include "shell/panel/ProcessingCard.h"

#include "shell/toolkit/SettingBinding.h"
#include "shell/toolkit/SettingRow.h"

namespace ostrelle {

using namespace Qt::StringLiterals;

namespace {

const InfoText overwriteInfo{
    u"Always Overwrite Existing Captions"_s,
    {{u"Controls whether to regenerate captions for images that already have them."_s},
     {u"• All captions are regenerated, even if they already exist\n"
      "• Ensures captions are always fresh and up-to-date\n"
      "• Best for manual processing and re-captioning"_s,
      u"When ENABLED (default):"_s},
     {u"• Images with substantial captions (>50 characters) are skipped\n"
      "• Only processes images with no caption or very short captions\n"
      "• Saves API costs by avoiding duplicate processing"_s,
      u"When DISABLED:"_s},
     {u"✓ Manual image selection\n"
      "✓ Process New Images button\n"
      "✓ Re-Caption ALL Images button\n"
      "✓ Automatic folder watching"_s,
      u"Applies to:"_s}}};

} // namespace

ProcessingCard::ProcessingCard(SettingsStore& settings, QWidget* parent)
    : Card(u"Image Processing"_s, parent) {
    setObjectName(u"processing"_s);
    auto* overwrite = new Switch;
    overwrite->setObjectName(u"alwaysOverwriteCaptions"_s);
    auto* row = new SettingRow(u"Always Overwrite Existing Captions"_s, overwrite);
    addRow(row);
    row->setInfo(overwriteInfo);
    bindSetting(overwrite, settings,
                {&SettingsStore::alwaysOverwriteCaptions, &SettingsStore::setAlwaysOverwriteCaptions,
                 &SettingsStore::alwaysOverwriteCaptionsChanged});
}

} // namespace ostrelle
