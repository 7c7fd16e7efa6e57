// SPDX-License-Identifier: GPL-3.0-or-later
#pragma once

#include "shell/panel/ShellParts.h"
#include "shell/tour/OnboardingSteps.h"

#include <QWidget>
#include <optional>

class QVBoxLayout;

namespace ostrelle {

class ElidedLabel;
class PanelActions;

/// One step of the tour: its picture, its words, and what the user can do right there.
class OnboardingPage : public QWidget {
    Q_OBJECT

public:
    /// Step and actions must outlive the page.
    OnboardingPage(const OnboardingStep& step, ShellParts parts, PanelActions& actions,
                   QWidget* parent = nullptr);

private:
    void addWords(const OnboardingStep& step);
    void addOffer(OnboardingOffer offer);
    void offerFolder();
    void offerKey();
    void offerRoster();
    void offerStyle();
    void offerGuide();
    ElidedLabel* addChoice(const QString& name, const QString& words,
                           std::optional<QString> (SettingsStore::*path)() const,
                           void (SettingsStore::*changed)(), void (PanelActions::*choose)());

    ShellParts m_parts;
    PanelActions& m_actions;
    QVBoxLayout* m_layout;
};

} // namespace ostrelle
