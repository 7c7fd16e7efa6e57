// SPDX-License-Identifier: GPL-3.0-or-later
#pragma once

#include <QList>
#include <QPointer>
#include <QPushButton>
#include <QString>

namespace ostrelle {

class Popover;

/// A paragraph of an explanation, with lines separated by "\n". Under a heading it is set small. Lines that
/// start with "• " or "✓ " form a list.
struct InfoParagraph {
    QString text;
    QString heading = {};
};

/// An explanation of a decision.
struct InfoText {
    QString title;
    QList<InfoParagraph> paragraphs;
};

/// A small round "i" that opens an explanation beside it. Escape or a click elsewhere closes it again.
class InfoButton : public QPushButton {
    Q_OBJECT

public:
    explicit InfoButton(const InfoText& text, QWidget* parent = nullptr);

    void setInfo(const InfoText& text);

    /// The open explanation, or null.
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
