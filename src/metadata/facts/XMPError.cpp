// SPDX-License-Identifier: GPL-3.0-or-later
#include "metadata/facts/XMPError.h"

#include <utility>

namespace ostrelle {

using namespace Qt::StringLiterals;

namespace {

QString words(XMPError::Case kind) {
    switch (kind) {
    case XMPError::Case::fileMissing:
        return u"XMP sidecar not found."_s;
    case XMPError::Case::parseFailed:
        return u"Failed to parse XMP XML."_s;
    case XMPError::Case::noPacket:
        return u"XMP packet missing root."_s;
    case XMPError::Case::writeFailed:
        return u"Failed to write XMP file."_s;
    }
    return {};
}

} // namespace

XMPError::XMPError(Case kind, QString detail)
    : Error(words(kind)), m_kind(kind), m_detail(std::move(detail)) {}

} // namespace ostrelle
