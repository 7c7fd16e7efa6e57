// SPDX-License-Identifier: GPL-3.0-or-later
#pragma once

#include <QLineEdit>

namespace ostrelle {

/// A line edit for a TCP port. Anything else, such as "" or "99999", is reset when the user leaves the field.
class PortField : public QLineEdit {
    Q_OBJECT

public:
    explicit PortField(QWidget* parent = nullptr);

    /// Shows the number, even if it is not a port; emits nothing.
    void setPort(qint64 port);

Q_SIGNALS:
    /// The user has entered a port, perhaps not completely.
    void entered(qint64 port);

private:
    void enter(const QString& text);
    void putBack();

    qint64 m_port = 0;
};

} // namespace ostrelle
