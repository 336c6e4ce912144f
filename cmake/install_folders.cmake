# The rights of the folders that the filter writes to; included after everything that installs files
# into them.
# SPDX-FileCopyrightText: The rastertoZR7700 authors
# SPDX-License-Identifier: Apache-2.0

if(NOT ZR7700_ROOT AND NOT ZR7700_DISTRIBUTION)
  # The log's folder is everybody's, as filters and their tests run as different users. The engine's
  # ini files are rewritten by the filter, which CUPS runs in the group lp.
  install(CODE [[
    set(caches $ENV{DESTDIR}/Library/Caches)
    set(data $ENV{DESTDIR}/Users/Shared/Tessary/ZR7700/Frameworks)
    file(MAKE_DIRECTORY ${caches} ${data})
    execute_process(COMMAND chmod 1777 ${caches})
    execute_process(COMMAND chgrp lp ${data} ERROR_QUIET)
    execute_process(COMMAND chmod 0775 ${data})
  ]])
endif()
