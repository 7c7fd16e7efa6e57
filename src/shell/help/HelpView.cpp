// SPDX-License-Identifier: GPL-3.0-or-later
#include "shell/help/HelpView.h"

#include "shell/help/IptcField.h"
#include "shell/toolkit/AccessibleView.h"
#include "shell/toolkit/Card.h"
#include "shell/toolkit/Illustration.h"
#include "shell/toolkit/Theme.h"

#include <QFontMetrics>
#include <QHBoxLayout>
#include <QKeyEvent>
#include <QLabel>
#include <QRegularExpression>
#include <QScrollArea>
#include <QVBoxLayout>

namespace ostrelle {

using namespace Qt::StringLiterals;

namespace {

const QString presetPicture = u":/illustrations/PhotoMechanicScreenshot.svg"_s;

constexpr int margin = 24;
constexpr int columnGap = 20;
constexpr int titleGap = 5; // between a card's title and its frame
constexpr int fieldIconSize = 22;
constexpr QSize pictureSize(400, 392);

/// The field, with its note below.
QWidget* makeFieldRow(const IptcField& field) {
    auto* row = new QWidget;
    row->setSizePolicy(QSizePolicy::Preferred,
                       QSizePolicy::Expanding); // rows share the spare height, not the title
    auto* layout = new QHBoxLayout(row);
    layout->setContentsMargins(measure::cardPadding, 8, measure::cardPadding, 9);
    layout->setSpacing(measure::cardPadding);
    Illustration* sign = Illustration::named(field.icon);
    sign->setFixedSize(fieldIconSize, fieldIconSize);
    layout->addWidget(sign);

    auto* words = new QVBoxLayout;
    words->setSpacing(2);
    QLabel* name = makeLabel(field.name);
    name->setFont(typeFont(TypeSize::text, QFont::DemiBold));
    words->addWidget(name);
    words->addWidget(makeLabel(field.note, TypeSize::text, TextTone::dim));
    layout->addLayout(words, 1);
    return row;
}

Card* makeFields() {
    auto* card = new Card(u"Required Fields"_s);
    card->setObjectName(u"requiredFields"_s);
    for (const IptcField& field : iptcFields()) {
        card->addRow(makeFieldRow(field));
    }
    return card;
}

QWidget* makeMissingPicture() {
    auto* card = new Card;
    card->setObjectName(u"missingPicture"_s);
    QLabel* title = makeLabel(u"Image not found"_s);
    QLabel* remedy =
        makeLabel(u"Make sure the image is added to:\nAssets.xcassets/PhotoMechanicScreenshot.imageset/"_s,
                  TypeSize::small, TextTone::dim);
    auto* words = new QWidget;
    auto* layout = new QVBoxLayout(words);
    layout->setContentsMargins(0, 0, 0, 0);
    layout->addStretch();
    for (QLabel* label : {title, remedy}) {
        label->setAlignment(Qt::AlignCenter);
        layout->addWidget(label);
    }
    layout->addStretch();
    card->addPaddedRow(words);
    card->setFixedSize(pictureSize);
    return card;
}

QWidget* makePicture(const QString& path) {
    auto* picture = new Illustration(path);
    if (picture->isMissing()) {
        delete picture;
        return makeMissingPicture();
    }
    picture->setObjectName(u"presetPicture"_s);
    picture->setAccessibleName(u"An IPTC preset with the required fields filled in"_s);
    return picture;
}

/// A line of a list: its words hang clear of the bullet on every line they wrap to.
QWidget* makeLine(const QString& words) {
    const qsizetype bullet = words.indexOf(QRegularExpression(u"[•◦] "_s));
    if (bullet < 0) {
        return makeLabel(words);
    }
    auto* line = new QWidget;
    line->setAccessibleName(words);
    auto* layout = new QHBoxLayout(line);
    constexpr int indent = 14;
    layout->setContentsMargins(bullet > 0 ? indent : 0, 0, 0, 0);
    layout->setSpacing(0);
    QLabel* sign = makeLabel(words.mid(bullet, 1), TypeSize::text, TextTone::dim);
    sign->setFixedWidth(indent);
    layout->addWidget(sign, 0, Qt::AlignTop);
    layout->addWidget(makeLabel(words.mid(bullet + 2)), 1);
    return line;
}

Card* makeSection(const QString& title, const QStringList& lines) {
    auto* words = new QWidget;
    auto* layout = new QVBoxLayout(words);
    layout->setContentsMargins(0, 2, 0, 2);
    layout->setSpacing(6);
    for (const QString& line : lines) {
        layout->addWidget(makeLine(line));
    }
    layout->addStretch();
    auto* card = new Card(title);
    card->addPaddedRow(words);
    return card;
}

Card* makeMissingFields() {
    return makeSection(u"How Missing Fields Are Handled"_s,
                       {u"The AI is explicitly instructed to:"_s,
                        u"• Use ONLY the XMP context provided - it will never guess missing fields"_s,
                        u"• Omit the date entirely if the date/time is not present"_s,
                        u"• Adapt location formatting based on available fields"_s,
                        u"• Use generic terms (e.g., 'during the game') if the Event is missing"_s});
}

Card* makeTips() {
    return makeSection(
        u"Tips for Best Results"_s,
        {u"• Use consistent date format"_s, u"• Include venue name in IPTC Location field"_s,
         u"• Format the Copyright field as you would want your credit line to appear at the end of "
         "the caption. Examples:"_s,
         u"  ◦ AP: (AP Photo/John Smith)"_s, u"  ◦ Getty: (Photo by John Smith/Getty Images)"_s,
         u"  ◦ Imagn: (Mandatory Credit: John Smith-Imagn Images)"_s});
}

/// Two widgets of the same height, side by side.
QHBoxLayout* makePair(QWidget* first, QWidget* second) {
    auto* pair = new QHBoxLayout;
    pair->setSpacing(columnGap);
    pair->addWidget(first, 1);
    pair->addWidget(second, 1);
    return pair;
}

/// The table in its frame, with the picture beside it.
QHBoxLayout* makeTable(const QString& picture) {
    auto* column = new QVBoxLayout;
    column->setSpacing(0);
    column->addSpacing(QFontMetrics(typeFont(TypeSize::small)).height() + titleGap);
    column->addWidget(makePicture(picture));
    column->addStretch();
    auto* table = new QHBoxLayout;
    table->setSpacing(columnGap);
    table->addWidget(makeFields(), 1);
    table->addLayout(column);
    return table;
}

QWidget* makeGuide(const QString& picture) {
    auto* guide = new QWidget;
    auto* layout = new QVBoxLayout(guide);
    layout->setContentsMargins(margin, margin - 4, margin, margin);
    layout->setSpacing(0);
    layout->addWidget(makeLabel(u"Photo Mechanic IPTC Preset Guide - Required Fields"_s, TypeSize::title));
    layout->addSpacing(6);
    layout->addWidget(
        makeLabel(u"For best caption quality, include these fields in your Photo Mechanic IPTC preset:"_s,
                  TypeSize::text, TextTone::dim));
    layout->addSpacing(18);
    layout->addLayout(makeTable(picture));
    layout->addSpacing(20);
    layout->addLayout(makePair(makeMissingFields(), makeTips()));
    layout->addStretch();
    return guide;
}

} // namespace

HelpView::HelpView(QWidget* parent) : HelpView(presetPicture, parent) {}

HelpView::HelpView(const QString& picture, QWidget* parent) : QWidget(parent) {
    setObjectName(u"help"_s);
    setAccessibleRole(*this, QAccessible::Window);
    auto* scroll = new QScrollArea;
    scroll->setObjectName(u"helpScroll"_s);
    scroll->setAccessibleName(u"IPTC Preset Guide"_s);
    scroll->setWidgetResizable(true);
    scroll->setFrameShape(QFrame::NoFrame);
    scroll->setHorizontalScrollBarPolicy(Qt::ScrollBarAlwaysOff);
    scroll->setWidget(makeGuide(picture));
    setFocusProxy(scroll);
    auto* layout = new QVBoxLayout(this);
    layout->setContentsMargins(0, 0, 0, 0);
    layout->addWidget(scroll);
}

void HelpView::keyPressEvent(QKeyEvent* event) {
    if (event->key() == Qt::Key_Escape) {
        close();
        return;
    }
    QWidget::keyPressEvent(event);
}

} // namespace ostrelle
