// SPDX-License-Identifier: GPL-3.0-or-later
#include "product/StartRequest.h"

#include <QCborArray>
#include <QCborMap>
#include <QCborValue>
#include <QFile>

namespace ostrelle {

using namespace Qt::StringLiterals;

namespace {

const QString wishKey = u"wish"_s;
const QString filesKey = u"files"_s;
const QString tokenKey = u"token"_s;
constexpr auto lastWish = StartRequest::Wish::switchAutoMode;

} // namespace

QByteArray StartRequest::toBytes() const {
    QCborArray names;
    for (const QString& file : files) {
        names.append(QFile::encodeName(file));
    }
    const QCborMap map{
        {wishKey, static_cast<qint64>(wish)}, {filesKey, names}, {tokenKey, QCborValue(activationToken)}};
    return map.toCborValue().toCbor();
}

std::optional<StartRequest> StartRequest::fromBytes(const QByteArray& bytes) {
    QCborParserError error;
    const QCborMap map = QCborValue::fromCbor(bytes, &error).toMap();
    const qint64 wish = map.value(wishKey).toInteger(-1);
    if (error.error != QCborError::NoError || wish < 0 || wish > static_cast<qint64>(lastWish)) {
        return std::nullopt;
    }
    StartRequest request{.wish = static_cast<Wish>(wish),
                         .activationToken = map.value(tokenKey).toByteArray()};
    const QCborArray names = map.value(filesKey).toArray();
    for (const QCborValue& name : names) {
        request.files.append(QFile::decodeName(name.toByteArray()));
    }
    return request;
}

} // namespace ostrelle
