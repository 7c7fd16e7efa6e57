// SPDX-License-Identifier: GPL-3.0-or-later
#pragma once

#include <QByteArray>
#include <QString>
#include <exception>

namespace ostrelle {

/// The base of every failure that this program throws itself: a type to catch and a sentence to show.
class Error : public std::exception {
public:
    explicit Error(QString description);

    /// What went wrong, in words fit for the log or the screen.
    const QString& localizedDescription() const noexcept { return m_description; }
    /// The same in UTF-8.
    const char* what() const noexcept override { return m_utf8.constData(); }

private:
    QString m_description;
    QByteArray m_utf8;
};

/// The description of any exception: an Error's own, or what() of a library's.
QString describe(const std::exception& error);

} // namespace ostrelle
