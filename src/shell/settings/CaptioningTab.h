// SPDX-License-Identifier: GPL-3.0-or-later
#pragma once

#include <QWidget>

namespace ostrelle {

class Card;
class SettingsStore;

/// How captions are written and credited.
class CaptioningTab : public QWidget {
    Q_OBJECT

public:
    /// The settings must outlive the tab.
    explicit CaptioningTab(SettingsStore& settings, QWidget* parent = nullptr);

private:
    void addStyle(Card& card);
    void addFallbackBehavior(Card& card);
    void addCredit(Card& card);
    void addRightsFallback(Card& card);

    SettingsStore& m_settings;
};

} // namespace ostrelle
