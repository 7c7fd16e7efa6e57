// SPDX-License-Identifier: GPL-3.0-or-later
#pragma once

#include <QList>
#include <QPointer>
#include <QPushButton>
#include <QString>

namespace ostrelle {

class Popover;

/// A paragraph of an explanation; lines are parted by "\n". One with a heading is set small below it. Lines
/// that begin with "• " or "✓ " are set as a list.
struct InfoParagraph {
    QString text;
    QString heading = {};
};

/// An explanation: what a decision is about.
struct InfoText {
    QString title;
    QList<InfoParagraph> paragraphs;
};

/// A small round "i" that opens an explanation beside it. Escape and a click elsewhere close that again.
class InfoButton : public QPushButton {
    Q_OBJECT

public:
    explicit InfoButton(const InfoText& text, QWidget* parent = nullptr);

    void setInfo(const InfoText& text);

    /// The explanation when it is open, else null.
    Popover* popover() const;

    void openPopover();

    QSize sizeHint() const override;
    QSize minimumSizeHint() const override;

protected:
    void paintEvent(QPaintEvent* event) override;

private:
    InfoText m_text;
    QPointer<Popover> m_popover;
};

} // namespace ostrelle
