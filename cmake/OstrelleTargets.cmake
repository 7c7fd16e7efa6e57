# SPDX-License-Identifier: GPL-3.0-or-later
# Settings shared by every target of this repository.

add_library(ostrelle_options INTERFACE)
target_compile_options(ostrelle_options INTERFACE
  -Wall -Wextra -Wpedantic -Wconversion -Wshadow -Wnon-virtual-dtor
  $<$<BOOL:${OSTRELLE_WERROR}>:-Werror>)
target_compile_definitions(ostrelle_options INTERFACE
  QT_NO_CAST_FROM_ASCII QT_NO_CAST_TO_ASCII QT_NO_FOREACH QT_NO_KEYWORDS
  # The headers of later QCoro connect without a context.
  $<$<VERSION_LESS:${QCoro6_VERSION},0.9>:QT_NO_CONTEXTLESS_CONNECT>)
if(OSTRELLE_SANITIZE)
  target_compile_options(ostrelle_options INTERFACE
    -fsanitize=${OSTRELLE_SANITIZE} -fno-omit-frame-pointer -fno-sanitize-recover=undefined)
  target_link_options(ostrelle_options INTERFACE -fsanitize=${OSTRELLE_SANITIZE})
endif()

# ostrelle_library(NAME SOURCES... [LINKS targets...]): one folder of src/ as a static library.
# The LINKS to other folders follow the layers, which scripts/check-layers enforces for includes.
function(ostrelle_library name)
  cmake_parse_arguments(PARSE_ARGV 1 ARG "" "" "SOURCES;LINKS")
  add_library(ostrelle_${name} STATIC ${ARG_SOURCES})
  target_include_directories(ostrelle_${name} PUBLIC ${PROJECT_SOURCE_DIR}/src)
  target_link_libraries(ostrelle_${name} PUBLIC ${ARG_LINKS} PRIVATE ostrelle_options)
endfunction()

# ostrelle_program(NAME SOURCES... LINKS targets...)
function(ostrelle_program name)
  cmake_parse_arguments(PARSE_ARGV 1 ARG "" "" "SOURCES;LINKS")
  add_executable(${name} ${ARG_SOURCES})
  target_link_libraries(${name} PRIVATE ${ARG_LINKS} ostrelle_options)
endfunction()
