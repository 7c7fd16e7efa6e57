// SPDX-License-Identifier: GPL-3.0-or-later
#include "platform/InterruptSignals.h"

#include "core/Error.h"

#include <pthread.h>
#include <signal.h>
#include <sys/signalfd.h>
#include <unistd.h>

namespace ostrelle {

namespace {

sigset_t interruptSet() {
    sigset_t set;
    ::sigemptyset(&set);
    ::sigaddset(&set, SIGINT);
    ::sigaddset(&set, SIGTERM);
    return set;
}

int openDescriptor() {
    const sigset_t set = interruptSet();
    ::pthread_sigmask(SIG_BLOCK, &set, nullptr);
    const int descriptor = ::signalfd(-1, &set, SFD_CLOEXEC | SFD_NONBLOCK);
    if (descriptor < 0) {
        throw Error(QStringLiteral("The system cannot tell the program of signals."));
    }
    return descriptor;
}

} // namespace

InterruptSignals::InterruptSignals() : m_descriptor(openDescriptor()) {}

InterruptSignals::~InterruptSignals() {
    m_notifier.reset();
    ::close(m_descriptor);
}

void InterruptSignals::listen() {
    m_notifier.emplace(m_descriptor, QSocketNotifier::Read);
    connect(&*m_notifier, &QSocketNotifier::activated, this, &InterruptSignals::take);
}

void InterruptSignals::take() {
    signalfd_siginfo received{};
    if (::read(m_descriptor, &received, sizeof received) != static_cast<ssize_t>(sizeof received)) {
        return;
    }
    m_notifier->setEnabled(false);
    const sigset_t set = interruptSet();
    ::pthread_sigmask(SIG_UNBLOCK, &set, nullptr);
    Q_EMIT interrupted();
}

} // namespace ostrelle
