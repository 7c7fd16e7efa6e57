// SPDX-License-Identifier: GPL-3.0-or-later
#include "platform/SendQueue.h"

#include <linux/sockios.h>
#include <netinet/in.h>
#include <sys/ioctl.h>
#include <sys/socket.h>

namespace ostrelle {

namespace {

/// The port at the connection's far end; nothing for other or closed descriptors.
int peerPortOf(int descriptor) {
    sockaddr_storage peer{};
    socklen_t size = sizeof peer;
    if (::getpeername(descriptor, reinterpret_cast<sockaddr*>(&peer), &size) != 0) {
        return -1;
    }
    switch (peer.ss_family) {
    case AF_INET:
        return ntohs(reinterpret_cast<const sockaddr_in&>(peer).sin_port);
    case AF_INET6:
        return ntohs(reinterpret_cast<const sockaddr_in6&>(peer).sin6_port);
    default:
        return -1;
    }
}

} // namespace

qint64 unacknowledgedBytes(int peerPort) {
    // Qt does not reveal its sockets. A new descriptor gets the lowest free number, so a program with few
    // open files has them all among the first.
    constexpr int mostDescriptors = 1024;
    qint64 sum = 0;
    for (int descriptor = 0; descriptor < mostDescriptors; ++descriptor) {
        int queued = 0;
        if (peerPortOf(descriptor) == peerPort && ::ioctl(descriptor, SIOCOUTQ, &queued) == 0) {
            sum += queued;
        }
    }
    return sum;
}

} // namespace ostrelle
