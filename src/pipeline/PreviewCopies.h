// SPDX-License-Identifier: GPL-3.0-or-later
#pragma once

#include <QByteArray>
#include <QDateTime>
#include <QString>
#include <utility>

namespace ostrelle {

/// The folder with copies of the JPEGs sent to the model, to see what it saw.
class PreviewCopies {
public:
    explicit PreviewCopies(QString folder) : m_folder(std::move(folder)) {}

    /// The path of the copy for an image, named after it without its extension.
    QString path(const QString& imagePath) const;
    /// Writes the copy, over any earlier one of the same name. Safe on any thread. Throws FileError.
    void save(const QByteArray& jpeg, const QString& imagePath) const;
    /// Removes the copies from before that time. Safe on any thread; what cannot be removed stays.
    void forget(const QDateTime& before) const;

private:
    QString m_folder;
};

} // namespace ostrelle
