# SPDX-License-Identifier: MIT
# Compiler settings for all targets of this tree. None of them reaches a parent project.

if(PROJECT_IS_TOP_LEVEL AND NOT CMAKE_BUILD_TYPE AND NOT CMAKE_CONFIGURATION_TYPES)
  set(CMAKE_BUILD_TYPE Release CACHE STRING "Build type" FORCE)
endif()

set(CMAKE_C_STANDARD 11)
set(CMAKE_C_STANDARD_REQUIRED ON)
set(CMAKE_CXX_STANDARD 20)
set(CMAKE_CXX_STANDARD_REQUIRED ON)
set(CMAKE_CXX_EXTENSIONS OFF)
set(CMAKE_C_VISIBILITY_PRESET hidden)
set(CMAKE_CXX_VISIBILITY_PRESET hidden)
set(CMAKE_VISIBILITY_INLINES_HIDDEN ON)
set(CMAKE_POSITION_INDEPENDENT_CODE ON)
set(CMAKE_EXPORT_COMPILE_COMMANDS ON)
set(CMAKE_RUNTIME_OUTPUT_DIRECTORY ${PROJECT_BINARY_DIR}/bin)
# Keeps the assertions of tests and tools in every build type.
add_compile_options(-UNDEBUG)

add_compile_options(-Wall -Wextra -Wconversion -Wshadow)
# GCC 12 warns falsely of an overlap in "text" + string at -O3 (GCC bug 105329, fixed in 13).
if(CMAKE_CXX_COMPILER_ID STREQUAL "GNU" AND CMAKE_CXX_COMPILER_VERSION VERSION_LESS 13)
  add_compile_options($<$<COMPILE_LANGUAGE:CXX>:-Wno-restrict>)
endif()
if(GWQ_WERROR)
  # C only: GCC 12's analyzer does not support C++ and reports false positives.
  add_compile_options(-Werror $<$<COMPILE_LANG_AND_ID:C,GNU>:-fanalyzer>)
endif()

# Programs find the library in the build tree by an rpath, which must not be installed.
set(CMAKE_SKIP_INSTALL_RPATH ON)

# Keeps the build machine's paths out of the binaries.
add_compile_options(-ffile-prefix-map=${PROJECT_SOURCE_DIR}/=)

if(GWQ_SANITIZE)
  # Reports need lines alone. More would also make Clang refer to each function that is a template's argument, which a
  # program that loads the library cannot resolve.
  add_compile_options(-fsanitize=${GWQ_SANITIZE} -fno-omit-frame-pointer -fno-sanitize-recover=all -g1)
  add_link_options(-fsanitize=${GWQ_SANITIZE})
else()
  # -U first: a distribution's compiler may predefine _FORTIFY_SOURCE.
  add_compile_options($<$<CONFIG:Release>:-U_FORTIFY_SOURCE> $<$<CONFIG:Release>:-D_FORTIFY_SOURCE=3>
    -fstack-protector-strong)
  if(CMAKE_SYSTEM_PROCESSOR MATCHES "^(x86_64|amd64|AMD64)$")
    add_compile_options(-fcf-protection=full -fstack-clash-protection)
  elseif(CMAKE_SYSTEM_PROCESSOR MATCHES "^(aarch64|arm64)$")
    # Clang 14 has no stack-clash protection for this processor.
    add_compile_options(-mbranch-protection=standard $<$<C_COMPILER_ID:GNU>:-fstack-clash-protection>)
  endif()
endif()
if(GWQ_COVERAGE)
  # %4m merges the profiles of concurrent runs into a pool of four files per binary.
  set(GWQ_COVERAGE_OPTIONS -fcoverage-mapping -fcoverage-compilation-dir=${PROJECT_SOURCE_DIR}
    -fprofile-update=atomic -fprofile-instr-generate=${PROJECT_BINARY_DIR}/profiles/%4m.profraw)
endif()
# now: lazy binding would save the registers on the stack, with parts of a secret in them.
add_link_options(LINKER:-z,relro,-z,now,-z,noexecstack)
