# Where filters and backends are installed: where CUPS looks for them. The files of the fixed paths go
# to those paths, everything else under the prefix.
# SPDX-FileCopyrightText: The rastertoZR7700 authors
# SPDX-License-Identifier: Apache-2.0

find_program(CUPS_CONFIG cups-config)
set(serverbin /usr/lib/cups)
if(CUPS_CONFIG)
  execute_process(COMMAND ${CUPS_CONFIG} --serverbin OUTPUT_VARIABLE serverbin
    OUTPUT_STRIP_TRAILING_WHITESPACE)
endif()
set(ZR7700_CUPS_SERVERBIN ${serverbin} CACHE PATH "Where CUPS keeps its filters and backends")
