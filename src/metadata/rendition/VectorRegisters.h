// SPDX-License-Identifier: GPL-3.0-or-later
#pragma once

namespace ostrelle {

#if defined(__x86_64__)
[[gnu::target("avx")]] inline void clearWithAvx() {
    __builtin_ia32_vzeroupper();
}
#endif

/// Clears the upper halves of the processor's AVX registers, if it has any. Reading an image's metadata
/// leaves them in use, and until they are cleared, all SSE code of the thread is slow: the tone curve of a
/// RAW picture took eight times as long.
inline void clearUpperVectorHalves() {
#if defined(__x86_64__)
    if (__builtin_cpu_supports("avx")) {
        clearWithAvx();
    }
#endif
}

} // namespace ostrelle
