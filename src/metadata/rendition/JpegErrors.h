// SPDX-License-Identifier: GPL-3.0-or-later
#pragma once

#include <QString>
#include <csetjmp>
#include <cstddef>
#include <cstdio>

// The library's header does not include what defines FILE and size_t.
// clang-format off
#include <jpeglib.h>
// clang-format on

namespace ostrelle {

/// libjpeg's error manager, but it neither ends the process nor prints. A fatal error leaves the library by
/// longjmp, which `guarded` catches.
class JpegErrors : public jpeg_error_mgr {
public:
    JpegErrors();
    JpegErrors(const JpegErrors&) = delete;
    JpegErrors& operator=(const JpegErrors&) = delete;

    /// Runs a call of a libjpeg function; false when it failed. The jump skips destructors, so `call` must
    /// create no objects and call only one library function.
    template <typename Call>
    bool guarded(Call call) {
        if (setjmp(m_jump) != 0) {
            return false;
        }
        call();
        return true;
    }

    /// Aborts the current call like a fatal error. Only for callbacks of the library.
    [[noreturn]] void abandon(const char* reason);

    /// The library's message about the failure, without a full stop.
    QString reason() const { return QString::fromLatin1(m_reason); }

private:
    std::jmp_buf m_jump;
    char m_reason[JMSG_LENGTH_MAX] = {};
};

} // namespace ostrelle
