# What makes a fault of ours end the program instead of running somebody's code, in every build: the
# programs at addresses of chance (PIE), relocations and the table of functions read-only once they
# are bound, at start (full RELRO, BIND_NOW), stack frames, copies and accesses to containers checked.
# SPDX-FileCopyrightText: The rastertoZR7700 authors
# SPDX-License-Identifier: Apache-2.0

include(CheckPIESupported)
check_pie_supported(LANGUAGES C CXX)

target_compile_options(zr7700_options INTERFACE -fstack-protector-strong)
target_compile_definitions(zr7700_options INTERFACE $<$<COMPILE_LANGUAGE:CXX>:_GLIBCXX_ASSERTIONS>)
# A build that does not optimise has no checked copies, sanitizers have their own; and whoever sets a
# level has chosen.
if(NOT ZR7700_SANITIZE AND NOT "${CMAKE_CXX_FLAGS} ${CMAKE_CXX_FLAGS_INIT}" MATCHES "_FORTIFY_SOURCE")
  target_compile_options(zr7700_options INTERFACE
    $<$<CONFIG:Release,RelWithDebInfo,MinSizeRel>:-U_FORTIFY_SOURCE -D_FORTIFY_SOURCE=2>)
endif()
if(NOT APPLE)
  target_link_options(zr7700_options INTERFACE LINKER:-z,relro LINKER:-z,now)
endif()
