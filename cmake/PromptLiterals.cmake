# SPDX-License-Identifier: GPL-3.0-or-later
# ostrelle_prompt_literals(OUTPUT FILES...): generates a source file that holds each text file as a literal,
# byte for byte, under the file's name. Runs at configure time, and again when a file changes.
function(ostrelle_prompt_literals output)
  set_property(DIRECTORY APPEND PROPERTY CMAKE_CONFIGURE_DEPENDS ${ARGN})
  set(rows "")
  foreach(path IN LISTS ARGN)
    cmake_path(GET path STEM name)
    file(READ "${path}" text)
    string(APPEND rows "    {u\"${name}\",\n     uR\"literal(${text})literal\"},\n")
  endforeach()
  file(CONFIGURE OUTPUT "${output}" @ONLY CONTENT [[
// Made by cmake/PromptLiterals.cmake.
#include "core/PromptLiteral.h"

namespace ostrelle {

static constexpr PromptLiteral literals[] = {
@rows@};

std::span<const PromptLiteral> promptLiterals() {
    return literals;
}

} // namespace ostrelle
]])
endfunction()
