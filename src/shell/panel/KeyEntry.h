// SPDX-License-Identifier: GPL-3.0-or-later
#pragma once

#include "shell/panel/ShellParts.h"

#include <QCoroTask>
#include <QWidget>

namespace ostrelle {

class ActionButton;
class SecureField;
class StatusMark;

/// Stores the key without surrounding white space, says whether it could be saved, and then has the service
/// asked about it. Does nothing when nothing is left of it.
QCoro::Task<> storeApiKey(ShellParts parts, QString entered);

/// The field for the key, the button that saves it and the link to where one gets a key.
class KeyEntry : public QWidget {
    Q_OBJECT

public:
    explicit KeyEntry(ShellParts parts, QWidget* parent = nullptr);

    SecureField* field() const { return m_field; }

Q_SIGNALS:
    /// The user wants this key to be stored.
    void entered(const QString& key);

private:
    SecureField* m_field;
};

/// What the service says of the stored key, with a link to ask again where it could not be asked. Hidden
/// while nothing is known.
class KeyVerdictLine : public QWidget {
    Q_OBJECT

public:
    explicit KeyVerdictLine(KeyCheck& check, QWidget* parent = nullptr);

private:
    void showVerdict();

    KeyCheck& m_check;
    StatusMark* m_words;
    ActionButton* m_again;
};

} // namespace ostrelle
