// SPDX-License-Identifier: GPL-3.0-or-later
#pragma once

#include "platform/Workspace.h"
#include "product/WebPages.h"

#include <QWidget>

namespace ostrelle {

class ActionButton;

/// The program's name and version, and where to learn more. Escape closes it.
class AboutView : public QWidget {
    Q_OBJECT

public:
    /// The workspace must outlive the view.
    explicit AboutView(Workspace& workspace, const WebPages& pages, QWidget* parent = nullptr);

protected:
    void keyPressEvent(QKeyEvent* event) override;

private:
    ActionButton* makeLink(const QString& words, const QString& name, const QUrl& page);

    Workspace& m_workspace;
};

} // namespace ostrelle
