// SPDX-License-Identifier: GPL-3.0-or-later
#include "shell/toolkit/SettingRow.h"

#include "shell/toolkit/ElidedLabel.h"
#include "shell/toolkit/Theme.h"

#include <QAbstractItemView>
#include <QComboBox>
#include <QHBoxLayout>
#include <QLabel>
#include <QLineEdit>
#include <QVBoxLayout>

namespace ostrelle {

using namespace Qt::StringLiterals;

namespace {

constexpr int padding = 4;

/// A label with a buddy treats "&" as the mark of a shortcut.
QString withoutShortcuts(QString words) {
    return words.replace(u'&', u"&&"_s);
}

QString withoutMnemonic(QString words) {
    const QString ampersand(QChar::Null); // stands for a real one meanwhile
    return words.replace(u"&&"_s, ampersand).remove(u'&').replace(ampersand, u"&"_s);
}

/// The row's name. Unlike a plain label that may wrap, it asks for the width of one line, so that elidable
/// words beside it are cut first.
class NameLabel : public QLabel {
public:
    using QLabel::QLabel;

    QSize sizeHint() const override {
        return {fontMetrics().size(Qt::TextShowMnemonic, text()).width() + 1, QLabel::sizeHint().height()};
    }
};

/// A control with its own words keeps them for screen readers; the row's name tells such controls apart.
void nameForScreenReaders(QWidget& control, const QString& name) {
    const auto* button = qobject_cast<QAbstractButton*>(&control);
    if (button != nullptr && !button->text().isEmpty()) {
        if (control.accessibleName().isEmpty()) { // the row's name would take its place
            control.setAccessibleName(withoutMnemonic(button->text()));
        }
        control.setAccessibleDescription(name);
    } else if (control.focusPolicy() != Qt::NoFocus && control.accessibleName().isEmpty()) {
        control.setAccessibleName(name);
    }
    if (const auto* picker = qobject_cast<QComboBox*>(&control)) {
        picker->view()->setAccessibleName(name);
    }
}

/// Shares out the width: elidable words take what the name leaves, a field takes about half.
int stretchOf(const QWidget& control) {
    const bool grows = (control.sizePolicy().expandingDirections() & Qt::Horizontal) != 0;
    return grows ? 1 : 0;
}

} // namespace

SettingRow::SettingRow(const QString& name, QWidget* control, QWidget* parent)
    : QWidget(parent)
    , m_name(new NameLabel(withoutShortcuts(name)))
    , m_control(control)
    , m_line(new QHBoxLayout)
    , m_lines(new QVBoxLayout(this)) {
    m_name->setTextFormat(Qt::PlainText);
    m_name->setWordWrap(true);
    m_name->setBuddy(control);
    m_lines->setContentsMargins(measure::cardPadding, padding, measure::cardPadding, padding);
    m_lines->setSpacing(padding);
    m_line->setSpacing(measure::controlSpacing);
    m_line->addWidget(m_name, qobject_cast<ElidedLabel*>(control) != nullptr ? 0 : 1);
    m_lines->addLayout(m_line, 1);
    setMinimumHeight(measure::rowHeight);
    if (!control->objectName().isEmpty()) {
        setObjectName(control->objectName() + u"Row"_s);
    }
    m_line->addWidget(control, stretchOf(*control));
    nameForScreenReaders(*control, name);
}

void SettingRow::addControl(QWidget* control) {
    m_line->addWidget(control, stretchOf(*control));
    nameForScreenReaders(*control, name());
    if (m_name->buddy()->focusPolicy() == Qt::NoFocus) {
        m_name->setBuddy(control);
    }
}

InfoButton* SettingRow::setInfo(const InfoText& text) {
    if (m_info != nullptr) {
        m_info->setInfo(text);
        return m_info;
    }
    m_info = new InfoButton(text);
    m_info->setObjectName(m_control->objectName() + u"Info"_s);
    const int afterName = 1;
    m_line->insertWidget(afterName, m_info);
    setTabOrder(m_info, m_control);
    return m_info;
}

void SettingRow::setSecondLine(QWidget* widget) {
    m_lines->addWidget(widget);
    if (qobject_cast<QLineEdit*>(widget) != nullptr) {
        m_name->setBuddy(widget);
    }
    m_lines->setContentsMargins(measure::cardPadding, padding, measure::cardPadding, 2 * padding);
}

void SettingRow::setMnemonic(QChar letter) {
    m_mnemonic = letter;
    showName(name());
}

void SettingRow::showName(const QString& name) {
    QString words = withoutShortcuts(name);
    const qsizetype place = m_mnemonic.isNull() ? -1 : words.indexOf(m_mnemonic);
    m_name->setText(place < 0 ? words : words.insert(place, u'&'));
}

QString SettingRow::name() const {
    return withoutMnemonic(m_name->text());
}

void SettingRow::setName(const QString& name) {
    const QString before = this->name();
    showName(name);
    for (int index = 1; index < m_line->count(); ++index) {
        QWidget& control = *m_line->itemAt(index)->widget();
        if (control.accessibleName() == before) {
            control.setAccessibleName(name);
        } else if (control.accessibleDescription() == before) {
            control.setAccessibleDescription(name);
        }
    }
}

} // namespace ostrelle
