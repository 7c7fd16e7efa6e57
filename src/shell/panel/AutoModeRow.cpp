// SPDX-License-Identifier: GPL-3.0-or-later
#include "shell/panel/AutoModeRow.h"

#include "shell/panel/PanelActions.h"
#include "shell/toolkit/CounterLabel.h"
#include "shell/toolkit/SettingRow.h"
#include "shell/toolkit/Switch.h"
#include "shell/toolkit/Theme.h"
#include "state/PanelProgress.h"

#include <QHBoxLayout>
#include <QPainter>
#include <optional>

namespace ostrelle {

using namespace Qt::StringLiterals;

namespace {

QString nameOf(SourceType source) {
    return source == SourceType::local ? u"Automatically Caption New Images"_s
                                       : u"Automatically Download/Caption New Images Added to FTP Server"_s;
}

} // namespace

/// A dot in the colour of the state, which it also has as a name.
class AutoModeRow::Dot : public QWidget {
public:
    Dot() { setFixedSize(diameter, diameter); }

    void setState(const QString& name, QColor Theme::* color) {
        m_color = color;
        setAccessibleName(name);
        setToolTip(name);
        update();
    }

protected:
    void paintEvent(QPaintEvent*) override {
        QPainter painter(this);
        painter.setRenderHint(QPainter::Antialiasing);
        painter.setPen(Qt::NoPen);
        painter.setBrush(Theme::of(*this).*m_color);
        painter.drawEllipse(rect());
    }

private:
    static constexpr int diameter = 8;
    QColor Theme::* m_color = &Theme::good;
};

AutoModeRow::AutoModeRow(ShellParts parts, PanelActions& actions, const Problems& problems, QWidget* parent)
    : QWidget(parent), m_parts(parts), m_problems(problems), m_switch(new Switch) {
    m_switch->setObjectName(u"autoMode"_s);
    m_row = new SettingRow(nameOf(parts.settings.sourceType()), m_switch);
    m_row->setMnemonic(u'N');
    m_row->setSecondLine(m_statusLine = makeStatusLine());
    auto* layout = new QVBoxLayout(this);
    layout->setContentsMargins(0, 0, 0, 0);
    layout->addWidget(m_row);

    // The answer may take time, and arrives as a change of the setting.
    m_switch->setGuard([&actions] {
        actions.turnAutoModeOn();
        return false;
    });
    connect(m_switch, &Switch::clicked, this, [this](bool on) {
        if (!on) {
            m_parts.settings.setAutoMode(false);
        }
    });
    connect(&parts.settings, &SettingsStore::sourceTypeChanged, this, &AutoModeRow::showSource);
    connect(&parts.settings, &SettingsStore::autoModeChanged, this, &AutoModeRow::showState);
    connect(&parts.status, &StatusStore::nextScanCountdownChanged, this, &AutoModeRow::showState);
    connect(&parts.status, &StatusStore::isProcessingChanged, this, &AutoModeRow::showDot);
    connect(&parts.status, &StatusStore::queueChanged, this, &AutoModeRow::showDot);
    connect(&parts.status, &StatusStore::isPausedChanged, this, &AutoModeRow::showDot);
    connect(&parts.status, &StatusStore::ftpIsDownloadingChanged, this, &AutoModeRow::showDot);
    connect(&problems, &Problems::changed, this, &AutoModeRow::showDot);
    showState();
    showDot();
}

QWidget* AutoModeRow::makeStatusLine() {
    m_status = new CounterLabel;
    m_status->setObjectName(u"autoModeStatus"_s);
    m_status->setFont(typeFont(TypeSize::small));
    m_status->setForegroundRole(QPalette::PlaceholderText);
    auto* line = new QWidget;
    line->setObjectName(u"autoModeStatusLine"_s);
    auto* layout = new QHBoxLayout(line);
    layout->setContentsMargins(0, 0, 0, 0);
    layout->setSpacing(measure::controlSpacing);
    m_dot = new Dot;
    m_dot->setObjectName(u"autoModeDot"_s);
    layout->addWidget(m_dot);
    layout->addWidget(m_status, 1);
    return line;
}

void AutoModeRow::showState() {
    const bool isOn = m_parts.settings.autoMode();
    m_switch->setChecked(isOn);
    const std::optional<QString> line = autoModeLine(isOn, m_parts.status);
    m_status->setText(line.value_or(QString()));
    m_statusLine->setVisible(line.has_value());
}

void AutoModeRow::showDot() {
    const StatusStore& status = m_parts.status;
    if (!m_problems.list().isEmpty()) {
        m_dot->setState(u"Needs attention"_s, &Theme::missing);
    } else if (status.isPaused()) {
        m_dot->setState(u"Paused"_s, &Theme::missing);
    } else if (hasWork(status) || status.ftpIsDownloading()) {
        m_dot->setState(u"Working"_s, &Theme::accent);
    } else {
        m_dot->setState(u"Watching"_s, &Theme::good);
    }
}

void AutoModeRow::showSource() {
    m_row->setName(nameOf(m_parts.settings.sourceType()));
}

} // namespace ostrelle
