// SPDX-License-Identifier: GPL-3.0-or-later
#pragma once

#include <QLineEdit>

class QToolButton;

namespace ostrelle {

/// A line edit for a secret: dots, until its eye is pressed. When the field is hidden, it hides the secret
/// again and finishes editing. The eye is named "<objectName>Reveal" once the field has a name.
class SecureField : public QLineEdit {
    Q_OBJECT

public:
    explicit SecureField(const QString& objectName = {}, QWidget* parent = nullptr);

    bool isRevealed() const;
    void setRevealed(bool revealed);

protected:
    void resizeEvent(QResizeEvent* event) override;
    void hideEvent(QHideEvent* event) override;
    void keyPressEvent(QKeyEvent* event) override;

private:
    QToolButton* m_reveal;
};

} // namespace ostrelle
