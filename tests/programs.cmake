# SPDX-License-Identifier: BSD-3-Clause
# Sets `programs`: the folder of the programs as tests start them by name.

set(programs ${IPMIB_BUILD_BINDIR})
if(CMAKE_CROSSCOMPILING)
  # Programs of another processor start with their emulator.
  set(programs ${PROJECT_BINARY_DIR}/emulated)
  list(JOIN CMAKE_CROSSCOMPILING_EMULATOR " " emulator)
  foreach(program IN ITEMS ipmibctl ipmib-portcheck)
    set(content "#!/bin/sh\nexec ${emulator} ${IPMIB_BUILD_BINDIR}/${program} \"$@\"\n")
    file(GENERATE OUTPUT ${programs}/${program} CONTENT "${content}"
         FILE_PERMISSIONS OWNER_READ OWNER_WRITE OWNER_EXECUTE)
  endforeach()
endif()
