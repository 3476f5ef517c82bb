# SPDX-License-Identifier: BSD-3-Clause
# The target nlohmann_json::nlohmann_json, on every machine.

if(CMAKE_CROSSCOMPILING)
  # The library is headers alone, the same for every machine; those beside them are the build machine's own.
  find_path(IPMIB_NLOHMANN_DIR nlohmann/json.hpp PATHS /usr/include NO_CMAKE_FIND_ROOT_PATH REQUIRED)
  file(MAKE_DIRECTORY ${PROJECT_BINARY_DIR}/include)
  file(CREATE_LINK ${IPMIB_NLOHMANN_DIR}/nlohmann ${PROJECT_BINARY_DIR}/include/nlohmann SYMBOLIC)
  add_library(nlohmann_json::nlohmann_json INTERFACE IMPORTED)
  target_include_directories(nlohmann_json::nlohmann_json INTERFACE ${PROJECT_BINARY_DIR}/include)
else()
  find_package(nlohmann_json REQUIRED)
endif()
