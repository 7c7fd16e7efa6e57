// SPDX-License-Identifier: GPL-3.0-or-later
#include "transfer/ftp/FTPError.h"

#include <utility>

namespace ostrelle {

using namespace Qt::StringLiterals;

namespace {

QString words(FTPError::Case kind) {
    switch (kind) {
    case FTPError::Case::invalidURL:
        return u"Invalid FTP URL"_s;
    case FTPError::Case::cannotCreateStream:
        return u"Cannot create FTP stream"_s;
    case FTPError::Case::cannotOpenStream:
        return u"Cannot open FTP stream"_s;
    case FTPError::Case::readError:
        return u"Error reading from FTP server"_s;
    case FTPError::Case::invalidListing:
        return u"Invalid directory listing format"_s;
    case FTPError::Case::fileNotFound:
        return u"File not found on FTP server"_s;
    case FTPError::Case::cannotCreateFile:
        return u"Cannot create local file"_s;
    }
    return {};
}

} // namespace

FTPError::FTPError(Case kind, QString reason)
    : Error(words(kind)), m_kind(kind), m_reason(std::move(reason)) {}

} // namespace ostrelle
