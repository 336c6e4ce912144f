# What every target of ours is compiled with: an interface library, zr7700_options.
# SPDX-FileCopyrightText: The rastertoZR7700 authors
# SPDX-License-Identifier: Apache-2.0

add_library(zr7700_options INTERFACE)
# Ours by their folder; the engine's public header as whoever writes an engine includes it.
target_include_directories(zr7700_options INTERFACE ${CMAKE_CURRENT_LIST_DIR}/..
  ${CMAKE_CURRENT_LIST_DIR}/../include)
target_compile_options(zr7700_options INTERFACE
  $<$<COMPILE_LANGUAGE:C,CXX>:-Wall -Wextra -Wpedantic -Wshadow -Wconversion -Wsign-conversion
    -Wcast-qual -Wformat=2 -Wundef -Wvla>
  $<$<COMPILE_LANGUAGE:CXX>:-Wnon-virtual-dtor -Wold-style-cast -Woverloaded-virtual>
  # The disc geometry is defined to the last bit in plain double arithmetic: no fused operations.
  -ffp-contract=off)
# A filter lives on the PPD functions, which CUPS marks as deprecated.
target_compile_options(zr7700_options INTERFACE -Wno-deprecated-declarations)
# GCC 12 sees an overlap in "text" + std::string that is not there.
target_compile_options(zr7700_options INTERFACE
  $<$<AND:$<COMPILE_LANGUAGE:CXX>,$<CXX_COMPILER_ID:GNU>>:-Wno-restrict>)
if(ZR7700_WARNINGS_AS_ERRORS)
  target_compile_options(zr7700_options INTERFACE -Werror)
endif()
include(${CMAKE_CURRENT_LIST_DIR}/hardening.cmake)
if(ZR7700_SANITIZE)
  target_compile_options(zr7700_options INTERFACE
    -fsanitize=${ZR7700_SANITIZE} -fno-omit-frame-pointer -fno-sanitize-recover=all)
  target_link_options(zr7700_options INTERFACE -fsanitize=${ZR7700_SANITIZE})
endif()
if(ZR7700_ROOT)
  # Shared-memory names are flat and short: a root is told apart by its checksum.
  string(MD5 root_sum "${ZR7700_ROOT}")
  string(SUBSTRING ${root_sum} 0 8 root_sum)
  target_compile_definitions(zr7700_options INTERFACE
    ZR7700_ROOT="${ZR7700_ROOT}" ZR7700_SHM_PREFIX="${root_sum}-")
endif()
