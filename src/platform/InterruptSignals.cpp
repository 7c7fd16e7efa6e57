// SPDX-License-Identifier: GPL-3.0-or-later
#include "platform/InterruptSignals.h"

#include "core/Error.h"

#include <signal.h>
#include <sys/eventfd.h>
#include <unistd.h>

#include <cerrno>
#include <cstdint>

namespace ostrelle {

namespace {

constexpr int handledSignals[] = {SIGINT, SIGTERM, SIGHUP};

// A global, because a signal handler can reach nothing else.
volatile sig_atomic_t wakeUp = -1;

void wake(int) {
    const int before = errno;
    const std::uint64_t one = 1;
    [[maybe_unused]] const ssize_t written = ::write(wakeUp, &one, sizeof one);
    errno = before;
}

/// A signal ignored at the start, as under nohup, stays ignored.
void handle(int signal, void (*handler)(int)) {
    struct sigaction action{};
    ::sigaction(signal, nullptr, &action);
    if (action.sa_handler != SIG_IGN) {
        action = {};
        action.sa_handler = handler;
        action.sa_flags = SA_RESTART;
        ::sigaction(signal, &action, nullptr);
    }
}

int openDescriptor() {
    const int descriptor = ::eventfd(0, EFD_CLOEXEC | EFD_NONBLOCK);
    if (descriptor < 0) {
        throw Error(QStringLiteral("The system cannot tell the program of signals."));
    }
    return descriptor;
}

} // namespace

InterruptSignals::InterruptSignals()
    : m_descriptor(openDescriptor()), m_notifier(m_descriptor, QSocketNotifier::Read) {
    connect(&m_notifier, &QSocketNotifier::activated, this, &InterruptSignals::take);
    wakeUp = m_descriptor;
    for (const int signal : handledSignals) {
        handle(signal, wake);
    }
}

InterruptSignals::~InterruptSignals() {
    stopListening(SIG_DFL);
    wakeUp = -1;
    ::close(m_descriptor);
}

void InterruptSignals::take() {
    stopListening(SIG_IGN);
    Q_EMIT interrupted();
}

/// A closing terminal sends SIGHUP more than once, from the shell and from the system: the second must not
/// kill the shutdown that the first began.
void InterruptSignals::stopListening(void (*nextHangUp)(int)) {
    if (m_notifier.isEnabled()) {
        m_notifier.setEnabled(false);
        handle(SIGINT, SIG_DFL);
        handle(SIGTERM, SIG_DFL);
        handle(SIGHUP, nextHangUp);
    }
}

} // namespace ostrelle
