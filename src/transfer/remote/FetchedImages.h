// SPDX-License-Identifier: GPL-3.0-or-later
#pragma once

#include "platform/DefaultsStore.h"

#include <QCoroTask>
#include <QString>
#include <QStringList>

namespace ostrelle {

/// The images that were fetched from servers and have not been captioned yet. Kept across runs, so that a
/// kill, an error or a server that has moved its files elsewhere lets none be forgotten.
class FetchedImages {
public:
    /// The store must outlive the record.
    explicit FetchedImages(DefaultsStore& defaults) : m_defaults(defaults) {}

    /// Resumes when the record is saved, or cannot be.
    QCoro::Task<> add(QString path);
    void remove(const QString& path);
    /// The names of the images in the folder, in the order of their coming.
    QStringList namesIn(const QString& folder) const;

private:
    void setNames(const QString& folder, const QStringList& names);

    DefaultsStore& m_defaults;
};

} // namespace ostrelle
