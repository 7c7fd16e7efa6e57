// SPDX-License-Identifier: GPL-3.0-or-later
#include "metadata/facts/OvertakenError.h"

namespace ostrelle {

using namespace Qt::StringLiterals;

namespace {

QString words(OvertakenError::Case kind) {
    switch (kind) {
    case OvertakenError::Case::captionEdited:
        return u"Its caption was edited meanwhile and stays as it is."_s;
    case OvertakenError::Case::captionAndFactsEdited:
        return u"Its caption and other metadata were edited meanwhile and stay as they are."_s;
    case OvertakenError::Case::factsChanged:
        return u"Its metadata were changed meanwhile by another program."_s;
    case OvertakenError::Case::pictureReplaced:
        break;
    }
    return u"Its picture was replaced by another one meanwhile."_s;
}

} // namespace

OvertakenError::OvertakenError(Case kind) : Error(words(kind)), m_kind(kind) {}

} // namespace ostrelle
