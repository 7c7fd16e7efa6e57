// SPDX-License-Identifier: GPL-3.0-or-later
#include "metadata/rendition/JpegErrors.h"

#include <cstring>

namespace ostrelle {

JpegErrors::JpegErrors() : jpeg_error_mgr{} {
    jpeg_std_error(this);
    error_exit = [](j_common_ptr info) {
        char reason[JMSG_LENGTH_MAX];
        info->err->format_message(info, reason);
        static_cast<JpegErrors*>(info->err)->abandon(reason);
    };
    emit_message = [](j_common_ptr, int) {};
    output_message = [](j_common_ptr) {};
}

void JpegErrors::abandon(const char* reason) {
    std::strncpy(m_reason, reason, sizeof m_reason - 1);
    std::longjmp(m_jump, 1);
}

} // namespace ostrelle
