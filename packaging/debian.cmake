# SPDX-License-Identifier: MIT
# The Debian packages: scripts/package.
set(CPACK_GENERATOR DEB)
set(CPACK_PACKAGE_VERSION ${PROJECT_VERSION})
set(CPACK_PACKAGE_CONTACT "The gwq developers <maintainers@gwq.invalid>")
set(CPACK_PACKAGING_INSTALL_PREFIX ${CMAKE_INSTALL_PREFIX})
set(CPACK_DEBIAN_PACKAGE_HOMEPAGE "https://gwq.example/")
set(CPACK_COMPONENTS_ALL runtime development python)
if(GWQ_PACKAGES)
  list(APPEND CPACK_COMPONENTS_ALL documentation)
endif()
if(TARGET gwq-terminal)
  list(APPEND CPACK_COMPONENTS_ALL terminal)
endif()
set(CPACK_DEB_COMPONENT_INSTALL ON)
set(CPACK_DEBIAN_FILE_NAME DEB-DEFAULT)
set(CPACK_DEBIAN_PACKAGE_SHLIBDEPS ON)
set(CPACK_DEBIAN_PACKAGE_CONTROL_STRICT_PERMISSION ON)
# What is linked against the library wants this version or a later one.
set(CPACK_DEBIAN_PACKAGE_GENERATE_SHLIBS ON)
set(CPACK_DEBIAN_PACKAGE_GENERATE_SHLIBS_POLICY ">=")
# Symbols go to packages of their own, and what is left is stripped.
set(CPACK_DEBIAN_DEBUGINFO_PACKAGE ON)

set(CPACK_DEBIAN_RUNTIME_PACKAGE_NAME ${gwq_runtime})
set(CPACK_DEBIAN_RUNTIME_PACKAGE_SECTION libs)
set(CPACK_DEBIAN_RUNTIME_PACKAGE_SUGGESTS libgwq-doc)
configure_file(postrm.in postrm @ONLY)
set(CPACK_DEBIAN_RUNTIME_PACKAGE_CONTROL_EXTRA ${CMAKE_CURRENT_BINARY_DIR}/postrm)
set(CPACK_COMPONENT_RUNTIME_DESCRIPTION
  "The library, and the udev rule that lets users open the terminal. PIN pad, screen and signature pad of the unit in\
 front of the customer, over USB or a serial port, by flat C functions.")

set(CPACK_DEBIAN_DEVELOPMENT_PACKAGE_NAME libgwq-dev)
set(CPACK_DEBIAN_DEVELOPMENT_PACKAGE_SECTION libdevel)
set(CPACK_DEBIAN_DEVELOPMENT_PACKAGE_SHLIBDEPS OFF)
set(CPACK_DEBIAN_DEVELOPMENT_PACKAGE_DEPENDS "${gwq_runtime} (= ${PROJECT_VERSION})")
set(CPACK_DEBIAN_DEVELOPMENT_PACKAGE_RECOMMENDS "libgwq-doc, pkg-config")
set(CPACK_DEBIAN_DEVELOPMENT_PACKAGE_SUGGESTS gwq-terminal)
set(CPACK_COMPONENT_DEVELOPMENT_DESCRIPTION
  "Headers, the list of exports, and what pkg-config and CMake look for.")

set(CPACK_DEBIAN_PYTHON_PACKAGE_NAME python3-gwq)
set(CPACK_DEBIAN_PYTHON_PACKAGE_SECTION python)
set(CPACK_DEBIAN_PYTHON_PACKAGE_ARCHITECTURE all)
set(CPACK_DEBIAN_PYTHON_PACKAGE_SHLIBDEPS OFF)
set(CPACK_DEBIAN_PYTHON_PACKAGE_DEPENDS "python3 (>= 3.9), ${gwq_runtime} (>= ${PROJECT_VERSION})")
set(CPACK_DEBIAN_PYTHON_DEBUGINFO_PACKAGE OFF)
set(CPACK_DEBIAN_PYTHON_PACKAGE_SUGGESTS "libgwq-doc, gwq-terminal")
set(CPACK_COMPONENT_PYTHON_DESCRIPTION "The library as a typed Python module.")

set(CPACK_DEBIAN_DOCUMENTATION_PACKAGE_NAME libgwq-doc)
set(CPACK_DEBIAN_DOCUMENTATION_PACKAGE_SECTION doc)
set(CPACK_DEBIAN_DOCUMENTATION_PACKAGE_ARCHITECTURE all)
set(CPACK_DEBIAN_DOCUMENTATION_PACKAGE_SHLIBDEPS OFF)
set(CPACK_DEBIAN_DOCUMENTATION_DEBUGINFO_PACKAGE OFF)
set(CPACK_DEBIAN_DOCUMENTATION_PACKAGE_SUGGESTS libgwq-dev)
set(CPACK_COMPONENT_DOCUMENTATION_DESCRIPTION
  "Guides, examples with what they need to be built, the reference manual, and a manual page for each function.")

# The preloaded half of umockdev is not linked.
set(CPACK_DEBIAN_TERMINAL_PACKAGE_NAME gwq-terminal)
set(CPACK_DEBIAN_TERMINAL_PACKAGE_SECTION devel)
set(CPACK_DEBIAN_TERMINAL_PACKAGE_DEPENDS umockdev)
# Without a Chinese font the pictures of its screens show boxes.
set(CPACK_DEBIAN_TERMINAL_PACKAGE_RECOMMENDS "fonts-wqy-microhei | fonts-noto-cjk, libgwq-doc")
set(CPACK_DEBIAN_TERMINAL_PACKAGE_SUGGESTS "libgwq-dev, python3-gwq")
set(CPACK_COMPONENT_TERMINAL_DESCRIPTION
  "gwq-terminal plays the unit for any program that drives one, without hardware and without root, over USB or a serial\
 line.")

include(CPack)
