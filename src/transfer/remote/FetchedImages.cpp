// SPDX-License-Identifier: GPL-3.0-or-later
#include "transfer/remote/FetchedImages.h"

#include <QFileInfo>

namespace ostrelle {

using namespace Qt::StringLiterals;

namespace {

/// Programs that fetch into different folders do not get in each other's way.
QString keyOf(const QString& folder) {
    return u"fetchedImages:"_s + folder;
}

} // namespace

QCoro::Task<> FetchedImages::add(QString path) {
    const QFileInfo image(path);
    QStringList names = namesIn(image.path());
    if (!names.contains(image.fileName())) {
        setNames(image.path(), names << image.fileName());
    }
    co_await m_defaults.saved(keyOf(image.path()));
}

void FetchedImages::remove(const QString& path) {
    const QFileInfo image(path);
    QStringList names = namesIn(image.path());
    if (names.removeAll(image.fileName()) > 0) {
        setNames(image.path(), names);
    }
}

QStringList FetchedImages::namesIn(const QString& folder) const {
    QStringList names;
    const QVariantList stored = m_defaults.get<QVariantList>(keyOf(folder)).value_or(QVariantList());
    for (const QVariant& name : stored) {
        names.append(name.toString());
    }
    return names;
}

void FetchedImages::setNames(const QString& folder, const QStringList& names) {
    if (names.isEmpty()) {
        m_defaults.remove(keyOf(folder));
        return;
    }
    QVariantList stored;
    for (const QString& name : names) {
        stored.append(name);
    }
    m_defaults.set(keyOf(folder), stored);
}

} // namespace ostrelle
