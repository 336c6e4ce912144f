# Where filters, backends and MIME files are installed: where CUPS looks for them. The files of the fixed
# paths go to those paths, everything else under the prefix.
# SPDX-FileCopyrightText: The rastertoZR7700 authors
# SPDX-License-Identifier: Apache-2.0

find_program(CUPS_CONFIG cups-config)

# cups_folder(VARIABLE OPTION STANDARD HELP): a cache variable with what cups-config answers.
function(cups_folder variable option standard help)
  set(folder ${standard})
  if(CUPS_CONFIG)
    execute_process(COMMAND ${CUPS_CONFIG} ${option} OUTPUT_VARIABLE folder
      OUTPUT_STRIP_TRAILING_WHITESPACE)
  endif()
  set(${variable} ${folder} CACHE PATH ${help})
endfunction()

cups_folder(ZR7700_CUPS_SERVERBIN --serverbin /usr/lib/cups "Where CUPS keeps its filters and backends")
cups_folder(ZR7700_CUPS_DATADIR --datadir /usr/share/cups "Where CUPS keeps its data")

# What lies at the fixed paths (driver/paths.h). A package installs it where a distribution keeps such
# files, and the fixed paths become links to there; everybody else installs to the paths themselves.
set(zr7700_resources ${ZR7700_ROOT}/Library/Printers/Tessary/ZR7700.bundle/Contents/Resources)
if(ZR7700_DISTRIBUTION)
  set(zr7700_engine_destination lib/zr7700/engine)
  set(zr7700_tables_destination share/zr7700/engine)
  set(zr7700_catalogues_destination share/locale)
else()
  set(zr7700_engine_destination /Library/Printers/Tessary/Frameworks)
  set(zr7700_tables_destination /Users/Shared/Tessary/ZR7700/Frameworks)
  set(zr7700_catalogues_destination ${zr7700_resources}/locale)
endif()
