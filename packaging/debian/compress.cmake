# SPDX-License-Identifier: BSD-3-Clause
# Debian's way with documentation: manual pages and change logs are compressed, without a time stamp.
foreach(pattern IN ITEMS usr/share/man/*/* usr/share/doc/*/changelog*)
  file(GLOB files ${CPACK_TEMPORARY_DIRECTORY}/*/${pattern})
  if(files)
    execute_process(COMMAND gzip -9n ${files} COMMAND_ERROR_IS_FATAL ANY)
  endif()
endforeach()
