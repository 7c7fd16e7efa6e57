// SPDX-License-Identifier: GPL-3.0-or-later
#pragma once

#include "core/Overtaking.h"
#include "core/TaskGroup.h"
#include "services/OpenAIClient.h"

#include <QCoroTask>
#include <QObject>
#include <QString>

namespace ostrelle {

/// What is known of the stored key: asks the service when told to, and at no other time. For the thread of
/// the event loop only.
class KeyCheck : public QObject {
    Q_OBJECT

public:
    enum class State { unknown, checking, accepted, refused, unreachable };

    /// Both must outlive the object and its tasks.
    KeyCheck(OpenAIClient& openAI, const DefaultsStore& defaults);

    /// Of the key that is stored now: another program may have stored another.
    State state() const;
    /// Why the service could not be asked; empty in any other state.
    QString reason() const { return m_reason; }

    /// Asks the service. The answer about an earlier key no longer counts.
    void check();
    /// The key has changed or gone.
    void forget();
    /// The service has refused a key in a request of another kind. An answer about the stored one counts
    /// more: the request may have been sent with the key before it.
    void hearRefusal();

    QCoro::Task<> finished() const { return m_tasks.finished(); }

Q_SIGNALS:
    void changed();

private:
    QCoro::Task<> ask();
    void show(State state, const QString& reason = {});

    OpenAIClient& m_openAI;
    const DefaultsStore& m_defaults;
    QString m_key; ///< that the state is about
    State m_state = State::unknown;
    QString m_reason;
    Overtaking m_checks;
    TaskGroup m_tasks{[](const QString&) {}}; // which do not throw
};

} // namespace ostrelle
