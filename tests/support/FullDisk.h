// SPDX-License-Identifier: GPL-3.0-or-later
#pragma once

#include <gtest/gtest.h>
#include <sys/resource.h>

#include <algorithm>
#include <csignal>

namespace ostrelle {

/// Simulates a full disk for the length of a scope: this process cannot write past the first `bytes` of any
/// file, and gets EFBIG.
class FullDisk {
public:
    explicit FullDisk(rlim_t bytes) : m_formerHandler(std::signal(SIGXFSZ, SIG_IGN)) {
        EXPECT_EQ(::getrlimit(RLIMIT_FSIZE, &m_former), 0);
        const rlimit small{std::min(bytes, m_former.rlim_max), m_former.rlim_max};
        EXPECT_EQ(::setrlimit(RLIMIT_FSIZE, &small), 0);
    }
    ~FullDisk() {
        EXPECT_EQ(::setrlimit(RLIMIT_FSIZE, &m_former), 0);
        std::signal(SIGXFSZ, m_formerHandler);
    }
    FullDisk(const FullDisk&) = delete;
    FullDisk& operator=(const FullDisk&) = delete;

private:
    rlimit m_former{};
    void (*m_formerHandler)(int);
};

} // namespace ostrelle
