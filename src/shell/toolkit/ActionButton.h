// SPDX-License-Identifier: GPL-3.0-or-later
#pragma once

#include <QPushButton>

namespace ostrelle {

/// The kind of a button's action: the one main action, any other, a destructive one, a link elsewhere, or a
/// menu below an icon.
enum class ActionKind { main, normal, destroying, link, menu };

/// Whether a button sits beside others or spans its column.
enum class ActionSize { compact, wide };

/// A button in the colours of its kind; drawn by the application's style sheet.
class ActionButton : public QPushButton {
    Q_OBJECT
    Q_PROPERTY(QString kind READ kindName CONSTANT)
    Q_PROPERTY(bool wide READ isWide CONSTANT)

public:
    explicit ActionButton(const QString& words, ActionKind kind = ActionKind::normal,
                          ActionSize size = ActionSize::compact, QWidget* parent = nullptr);

    /// Sets the label; unlike in setText(), "&" is an "&".
    void setWords(const QString& words);

    QString kindName() const;
    bool isWide() const;

private:
    ActionKind m_kind;
    ActionSize m_size;
};

} // namespace ostrelle
