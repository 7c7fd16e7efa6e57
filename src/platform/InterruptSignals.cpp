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

constexpr int handledSignals[] = {SIGINT, SIGTERM};

// A signal handler can reach nothing else.
volatile sig_atomic_t wakeUp = -1;

void wake(int) {
    const int before = errno;
    const std::uint64_t one = 1;
    [[maybe_unused]] const ssize_t written = ::write(wakeUp, &one, sizeof one);
    errno = before;
}

void handleSignals(void (*handler)(int)) {
    struct sigaction action{};
    action.sa_handler = handler;
    action.sa_flags = SA_RESTART;
    for (const int signal : handledSignals) {
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
    handleSignals(wake);
}

InterruptSignals::~InterruptSignals() {
    handleSignals(SIG_DFL);
    wakeUp = -1;
    m_notifier.setEnabled(false);
    ::close(m_descriptor);
}

void InterruptSignals::take() {
    handleSignals(SIG_DFL);
    m_notifier.setEnabled(false);
    Q_EMIT interrupted();
}

} // namespace ostrelle
