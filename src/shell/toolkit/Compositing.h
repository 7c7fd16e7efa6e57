// SPDX-License-Identifier: GPL-3.0-or-later
#pragma once

namespace ostrelle {

/// Whether windows may have transparent parts. Under X11 that takes a compositor, and without one they are
/// black.
bool isCompositing();

} // namespace ostrelle
