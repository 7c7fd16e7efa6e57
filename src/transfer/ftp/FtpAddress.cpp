// SPDX-License-Identifier: GPL-3.0-or-later
#include "transfer/ftp/FtpAddress.h"

#include <QUrl>

namespace ostrelle {

using namespace Qt::StringLiterals;

namespace {

QUrl urlOf(const FtpAddress& address) {
    QUrl url;
    url.setScheme(u"ftp"_s);
    url.setHost(address.host);
    url.setPort(address.port);
    url.setPath(address.path, QUrl::DecodedMode);
    return url;
}

} // namespace

std::optional<QString> FtpAddress::shown() const {
    QUrl url = urlOf(*this);
    url.setUserName(username, QUrl::DecodedMode);
    if (!url.isValid() || url.host().isEmpty() || !path.startsWith(u'/')) {
        return std::nullopt;
    }
    QString text = url.toString(QUrl::FullyEncoded);
    const QString user = url.userName(QUrl::FullyEncoded);
    const qsizetype afterUser = QStringView(u"ftp://").size() + user.size();
    return password.isEmpty() ? text : text.insert(afterUser, u":***"_s);
}

QByteArray FtpAddress::location(Root root) const {
    QUrl url = urlOf(*this);
    url.setPath({});
    // A raw ";type=a" at the end of a path would switch the transfer to text.
    const QByteArray top = root == Root::top ? "/" : ""; // an FTP URL tells them apart so (RFC 1738)
    return url.toEncoded(QUrl::FullyEncoded) + top + QUrl::toPercentEncoding(path, "/");
}

} // namespace ostrelle
