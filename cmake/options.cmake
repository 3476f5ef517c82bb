# SPDX-License-Identifier: BSD-3-Clause
# What every target of the project is built with, and where it is put.

set(CMAKE_CXX_STANDARD 20)
set(CMAKE_CXX_STANDARD_REQUIRED ON)
set(CMAKE_CXX_EXTENSIONS OFF)
set(CMAKE_C_STANDARD 11)
set(CMAKE_POSITION_INDEPENDENT_CODE ON)
set(CMAKE_CXX_VISIBILITY_PRESET hidden)
set(CMAKE_C_VISIBILITY_PRESET hidden)
set(CMAKE_VISIBILITY_INLINES_HIDDEN ON)
set(CMAKE_EXPORT_COMPILE_COMMANDS ON)

option(IPMIB_BUILD_TESTS "Build the tests" ON)
option(IPMIB_BUILD_BENCH "Build the benchmarks" ON)
option(IPMIB_WERROR "Treat warnings as errors" ON)
option(IPMIB_COMMANDS_FOR_CLANG "Compile commands are read by clang's tools: none of GCC's own options" OFF)
option(IPMIB_DEVICE_ONLY "Build only what runs on any machine: no Linux platform, no SNMP front end" ${CMAKE_CROSSCOMPILING})
set(IPMIB_SANITIZE "" CACHE STRING "Sanitizers to build with, e.g. address,undefined")

# Whoever has ccache has it used. It cannot look into a precompiled header, which is another one in each build.
if(NOT DEFINED ENV{CCACHE_DISABLE} AND NOT CMAKE_CXX_COMPILER_LAUNCHER)
  find_program(IPMIB_CCACHE ccache)
  if(IPMIB_CCACHE)
    set(CMAKE_C_COMPILER_LAUNCHER ${IPMIB_CCACHE})
    set(CMAKE_CXX_COMPILER_LAUNCHER ${IPMIB_CCACHE})
  endif()
endif()
if(CMAKE_CXX_COMPILER_LAUNCHER MATCHES ccache)
  set(CMAKE_DISABLE_PRECOMPILE_HEADERS ON)
endif()

add_library(ipmib_options INTERFACE)
target_compile_options(ipmib_options INTERFACE -Wall -Wextra -Wconversion -Wshadow -Wundef)
# What clang warns of by itself, so that the fuzz build, which is its, goes on building.
target_compile_options(ipmib_options INTERFACE "$<$<COMPILE_LANGUAGE:CXX>:-Woverloaded-virtual;-Wnon-virtual-dtor>")
if(CMAKE_CXX_COMPILER_ID STREQUAL GNU AND CMAKE_CXX_COMPILER_VERSION VERSION_LESS 13)
  # When it optimises, GCC 12 sees overlapping copies inside std::string's own operator+.
  target_compile_options(ipmib_options INTERFACE -Wno-restrict)
endif()
if(CMAKE_CXX_COMPILER_ID STREQUAL GNU AND NOT IPMIB_COMMANDS_FOR_CLANG AND CMAKE_SYSTEM_PROCESSOR MATCHES "^(x86_64|AMD64|i.86)$")
  # Left to itself, GCC clears and copies records by `rep stos` and `rep movs`, and to begin one takes longer than all else
  # that a step of a walk over interfaces does. Where size counts (-Os) this changes nothing.
  set(in_place "vector_loop:256:noalign,libcall:-1:noalign")
  target_compile_options(ipmib_options INTERFACE -mmemset-strategy=${in_place} -mmemcpy-strategy=${in_place})
endif()
if(IPMIB_WERROR)
  target_compile_options(ipmib_options INTERFACE -Werror)
endif()
if(IPMIB_SANITIZE)
  # The check of vtables opens a pipe to look at memory: a process without free descriptors, as some tests make, fails it.
  target_compile_options(ipmib_options INTERFACE -fsanitize=${IPMIB_SANITIZE} -fno-sanitize=vptr -fno-sanitize-recover=all
                                                 -fno-omit-frame-pointer)
  target_link_options(ipmib_options INTERFACE -fsanitize=${IPMIB_SANITIZE})
endif()

# Debug information and assertions name sources from the root of the project on, where gdb finds them when it is started there:
# the folder that a build happens to stand in is not in what it makes. Neither a release nor a build for size names any, and
# what sanitizers and coverage print is read where it was built.
if(NOT IPMIB_SANITIZE AND NOT CMAKE_CXX_FLAGS MATCHES "--coverage")
  add_compile_options($<$<NOT:$<CONFIG:Release,MinSizeRel>>:-ffile-prefix-map=${PROJECT_SOURCE_DIR}=.>)
  # Where GCC 12 follows variables through optimised code, what it writes depends on the addresses of its own memory, and so on
  # the length of the folder's name.
  add_compile_options($<$<AND:$<CONFIG:RelWithDebInfo>,$<CXX_COMPILER_ID:GNU>>:-fno-var-tracking-assignments>)
endif()

# Sources of a target read the same headers and need the same templates: several compiled as one take half the processor time
# of each alone. Sources still stand alone, and every other build compiles them so.
option(IPMIB_UNITY "Compile sources of a target several at a time: less time for all, more after a change of one" OFF)
# ipmib_unite(TARGET [ALONE SOURCES...]): ALONE have names in their anonymous namespaces that others have, too.
function(ipmib_unite target)
  cmake_parse_arguments(arg "" "" "ALONE" ${ARGN})
  if(NOT IPMIB_UNITY)
    return()
  endif()
  set_target_properties(${target} PROPERTIES UNITY_BUILD ON UNITY_BUILD_BATCH_SIZE 16)
  set_source_files_properties(${arg_ALONE} PROPERTIES SKIP_UNITY_BUILD_INCLUSION ON)
  if(CMAKE_CXX_COMPILER_ID STREQUAL GNU)
    # It warns of anonymous namespaces in what is included, as headers are.
    target_compile_options(${target} PRIVATE -Wno-subobject-linkage)
  endif()
endfunction()

# The contract: headers alone.
add_library(ipmib_contract INTERFACE)
target_include_directories(ipmib_contract INTERFACE $<BUILD_INTERFACE:${PROJECT_SOURCE_DIR}/include>)

# The build tree has the shape of the installed tree, so that programs find the plug-ins in the same place in both.
set(IPMIB_PLUGIN_DIR ${CMAKE_INSTALL_LIBDIR}/ipmib)
set(IPMIB_BUILD_SBINDIR ${PROJECT_BINARY_DIR}/${CMAKE_INSTALL_SBINDIR})
set(IPMIB_BUILD_BINDIR ${PROJECT_BINARY_DIR}/${CMAKE_INSTALL_BINDIR})
set(IPMIB_BUILD_PLUGIN_DIR ${PROJECT_BINARY_DIR}/${IPMIB_PLUGIN_DIR})
file(RELATIVE_PATH IPMIB_PLUGIN_FROM_SBIN /prefix/${CMAKE_INSTALL_SBINDIR} /prefix/${IPMIB_PLUGIN_DIR})
file(RELATIVE_PATH IPMIB_PLUGIN_FROM_BIN /prefix/${CMAKE_INSTALL_BINDIR} /prefix/${IPMIB_PLUGIN_DIR})

# Half the time of compiling most files goes into reading the standard library; ipmib_precompile(TARGET) has it read once.
# Sources still include what they use: with ccache there is no precompiled header.
file(CONFIGURE OUTPUT ${PROJECT_BINARY_DIR}/empty.cpp CONTENT "")
add_library(ipmib_standard_headers OBJECT ${PROJECT_BINARY_DIR}/empty.cpp)
target_link_libraries(ipmib_standard_headers PRIVATE ipmib_options)
set(IPMIB_STANDARD_HEADERS <algorithm> <array> <chrono> <cstdint> <cstring> <functional> <map> <memory> <optional> <set>
                           <span> <stdexcept> <string> <string_view> <utility> <vector>)
target_precompile_headers(ipmib_standard_headers PRIVATE ${IPMIB_STANDARD_HEADERS})
function(ipmib_precompile target)
  target_precompile_headers(${target} REUSE_FROM ipmib_standard_headers)
  ipmib_precompiled_warnings(${target})
endfunction()
# The same with further headers, for a target of many sources that read them.
function(ipmib_precompile_with target)
  target_precompile_headers(${target} PRIVATE ${IPMIB_STANDARD_HEADERS} ${ARGN})
  ipmib_precompiled_warnings(${target})
endfunction()
function(ipmib_precompiled_warnings target)
  if(CMAKE_CXX_COMPILER_ID STREQUAL GNU AND NOT CMAKE_DISABLE_PRECOMPILE_HEADERS)
    # GCC 12 forgets that a precompiled header is the system's, and warns of what std::string does inside.
    target_compile_options(${target} PRIVATE -Wno-array-bounds -Wno-stringop-overflow -Wno-stringop-overread)
  endif()
endfunction()
