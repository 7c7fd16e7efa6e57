// SPDX-License-Identifier: GPL-3.0-or-later
#include "services/KeyCheck.h"

#include "product/ApiKey.h"

#include <QPointer>

namespace ostrelle {

KeyCheck::KeyCheck(OpenAIClient& openAI, const DefaultsStore& defaults)
    : m_openAI(openAI), m_defaults(defaults) {}

KeyCheck::State KeyCheck::state() const {
    return apiKey(m_defaults) == m_key ? m_state : State::unknown;
}

void KeyCheck::check() {
    m_checks.overtake();
    m_key = apiKey(m_defaults);
    show(State::checking);
    m_tasks.spawn(ask());
}

void KeyCheck::forget() {
    m_checks.overtake();
    show(State::unknown);
}

void KeyCheck::hearRefusal() {
    if (state() == State::unknown || state() == State::unreachable) {
        m_key = apiKey(m_defaults);
        show(State::refused);
    }
}

QCoro::Task<> KeyCheck::ask() {
    const QPointer<KeyCheck> self(this);
    const Overtaking::Mark mark = m_checks.mark();
    const KeyVerdict verdict = co_await m_openAI.judgeKey();
    if (!self || mark.isOvertaken()) {
        co_return;
    }
    switch (verdict.kind) {
    case KeyVerdict::Kind::accepted:
        show(State::accepted);
        break;
    case KeyVerdict::Kind::refused:
        show(State::refused);
        break;
    case KeyVerdict::Kind::unknown:
        show(State::unreachable, verdict.reason);
        break;
    }
}

void KeyCheck::show(State state, const QString& reason) {
    m_state = state;
    m_reason = reason;
    Q_EMIT changed();
}

} // namespace ostrelle
