// SPDX-License-Identifier: GPL-3.0-or-later
#include "pipeline/MissingKey.h"

namespace ostrelle {

using namespace Qt::StringLiterals;

Alert missingKeyAlert() {
    Alert alert;
    alert.title = u"OpenAI API Key Required"_s;
    alert.text = u"Please enter your OpenAI API key in Settings to continue captioning images."_s;
    alert.buttons = QStringList{u"Open Settings"_s, u"Cancel"_s};
    return alert;
}

QString missingKeyMessage() {
    return u"Please add your API key in Settings."_s;
}

} // namespace ostrelle
