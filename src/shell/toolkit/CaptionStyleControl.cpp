// SPDX-License-Identifier: GPL-3.0-or-later
#include "shell/toolkit/CaptionStyleControl.h"

namespace ostrelle {

using namespace Qt::StringLiterals;

namespace {

QStringList styleNames() {
    QStringList names;
    for (const auto& row : rawValueRows<CaptionStyle>()) {
        names.append(row.label.toString());
    }
    return names;
}

} // namespace

CaptionStyleControl::CaptionStyleControl(SettingsStore& settings, const QString& objectName, QWidget* parent)
    : SegmentedControl(styleNames(), objectName, parent) {
    setAccessibleName(u"Caption Style"_s);
    const auto show = [this, &settings] { setCurrentIndex(static_cast<int>(settings.captionStyle())); };
    show();
    connect(&settings, &SettingsStore::captionStyleChanged, this, show);
    connect(this, &SegmentedControl::chosen, &settings,
            [&settings](int index) { settings.setCaptionStyle(static_cast<CaptionStyle>(index)); });
}

} // namespace ostrelle
