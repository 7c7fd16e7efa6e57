// SPDX-License-Identifier: GPL-3.0-or-later
#include "metadata/rendition/ExtractError.h"

namespace ostrelle {

using namespace Qt::StringLiterals;

namespace {

QString sentence(ExtractError::Case kind) {
    switch (kind) {
    case ExtractError::Case::cannotOpen:
        return u"The image could not be opened"_s;
    case ExtractError::Case::noImage:
        return u"The file holds no image"_s;
    case ExtractError::Case::cannotCreateThumbnail:
        return u"The picture could not be decoded"_s;
    case ExtractError::Case::cannotEncodeJPEG:
        break;
    }
    return u"The reduced picture could not be encoded as JPEG"_s;
}

} // namespace

ExtractError::ExtractError(Case kind, const QString& reason)
    : Error(reason.isEmpty() ? sentence(kind) + u'.' : sentence(kind) + u": "_s + reason + u'.')
    , m_kind(kind)
    , m_reason(reason) {}

} // namespace ostrelle
