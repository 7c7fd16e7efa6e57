// SPDX-License-Identifier: GPL-3.0-or-later
#pragma once

#include <QString>
#include <csetjmp>
#include <cstddef>
#include <cstdio>

// The library's header takes FILE and size_t for granted.
// clang-format off
#include <jpeglib.h>
// clang-format on

namespace ostrelle {

/// libjpeg's error manager without its two habits, ending the process and printing. A fatal error leaves
/// the call of the library by longjmp, which `guarded` catches.
class JpegErrors : public jpeg_error_mgr {
public:
    JpegErrors();
    JpegErrors(const JpegErrors&) = delete;
    JpegErrors& operator=(const JpegErrors&) = delete;

    /// Runs the call of a libjpeg function; false when it failed. The jump skips the destructors of what
    /// `call` made: let it make nothing, and call one library function only.
    template <typename Call>
    bool guarded(Call call) {
        if (setjmp(m_jump) != 0) {
            return false;
        }
        call();
        return true;
    }

    /// Leaves the call under way as a fatal error does. Only from a callback of the library.
    [[noreturn]] void abandon(const char* reason);

    /// The library's words for the failure, without a full stop.
    QString reason() const { return QString::fromLatin1(m_reason); }

private:
    std::jmp_buf m_jump;
    char m_reason[JMSG_LENGTH_MAX] = {};
};

} // namespace ostrelle
