// SPDX-License-Identifier: GPL-3.0-or-later
#pragma once

#include <QByteArray>
#include <QString>
#include <exception>

namespace ostrelle {

/// The base of every failure that this program raises itself: a type to catch and a sentence to show.
class Error : public std::exception {
public:
    explicit Error(QString description);

    /// What went wrong, for a log line or a person.
    const QString& localizedDescription() const noexcept { return m_description; }
    /// The same in UTF-8.
    const char* what() const noexcept override { return m_utf8.constData(); }

private:
    QString m_description;
    QByteArray m_utf8;
};

/// The words of any exception: an Error's description, or what() of a library's.
QString describe(const std::exception& error);

} // namespace ostrelle
