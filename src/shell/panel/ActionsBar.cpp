// SPDX-License-Identifier: GPL-3.0-or-later
#include "shell/panel/ActionsBar.h"

#include "shell/panel/PanelActions.h"
#include "shell/toolkit/ActionButton.h"

#include <QVBoxLayout>

namespace ostrelle {

using namespace Qt::StringLiterals;

namespace {

/// A reason disables the button and becomes its tooltip.
void setHindrance(ActionButton* button, const QString& reason) {
    button->setEnabled(reason.isEmpty());
    button->setToolTip(reason);
    button->setAccessibleDescription(reason);
}

} // namespace

ActionsBar::ActionsBar(ShellParts parts, PanelActions& actions, QWidget* parent)
    : QWidget(parent)
    , m_parts(parts)
    , m_select(new ActionButton(u"Select Images to Caption"_s, ActionKind::main, ActionSize::wide))
    , m_all(new ActionButton({}, ActionKind::normal, ActionSize::wide)) {
    m_select->setObjectName(u"selectImages"_s);
    m_select->setText(u"&Select Images to Caption"_s);
    m_all->setObjectName(u"captionAll"_s);
    auto* layout = new QVBoxLayout(this);
    layout->setContentsMargins(0, 0, 0, 4);
    layout->setSpacing(7);
    layout->addWidget(m_select);
    layout->addWidget(m_all);
    connect(m_select, &ActionButton::clicked, &actions, &PanelActions::selectImages);
    connect(m_all, &ActionButton::clicked, &actions, &PanelActions::captionAll);

    connect(&parts.settings, &SettingsStore::sourceTypeChanged, this, &ActionsBar::showSource);
    for (const auto changed : {&StatusStore::isProcessingChanged, &StatusStore::ftpIsCheckingChanged,
                               &StatusStore::ftpIsDownloadingChanged}) {
        connect(&parts.status, changed, this, &ActionsBar::showState);
    }
    showSource();
}

void ActionsBar::showSource() {
    const bool isLocal = m_parts.settings.sourceType() == SourceType::local;
    m_all->setText(isLocal ? u"Caption &All Local Images"_s : u"Download && Caption &ALL from FTP Server"_s);
    m_all->setAccessibleName(isLocal ? u"Caption All Local Images"_s
                                     : u"Download & Caption ALL from FTP Server"_s);
    showState();
}

void ActionsBar::showState() {
    const StatusStore& status = m_parts.status;
    const QString captioning =
        status.isProcessing() ? u"Images are being captioned. Wait until this run has ended."_s : QString();
    const bool isTransferring = m_parts.settings.sourceType() == SourceType::ftp &&
                                (status.ftpIsChecking() || status.ftpIsDownloading());
    setHindrance(m_select, captioning);
    setHindrance(m_all, captioning.isEmpty() && isTransferring
                            ? u"The FTP server is being checked. Wait until the files are here."_s
                            : captioning);
}

} // namespace ostrelle
