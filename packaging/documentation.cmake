# SPDX-License-Identifier: MIT
# What can be read: the package libgwq-doc with guides, examples, the reference manual and a manual page for each function,
# and the page of gwq-terminal. Its files are laid out as in the repository, so that links between them hold.
find_program(GWQ_DOXYGEN doxygen REQUIRED)
find_package(Python3 REQUIRED COMPONENTS Interpreter)
set(gwq_doc_dir ${CMAKE_INSTALL_DATADIR}/doc/libgwq-doc)
set(gwq_doc_build ${CMAKE_CURRENT_BINARY_DIR}/documentation)
set(gwq_run_python ${CMAKE_COMMAND} -E env PYTHONDONTWRITEBYTECODE=1 ${Python3_EXECUTABLE})

file(GLOB gwq_guides CONFIGURE_DEPENDS RELATIVE ${PROJECT_SOURCE_DIR}
  ${PROJECT_SOURCE_DIR}/*.md ${PROJECT_SOURCE_DIR}/docs/*.md ${PROJECT_SOURCE_DIR}/bench/results/*.md
  ${PROJECT_SOURCE_DIR}/terminal/README.md)
list(TRANSFORM gwq_guides PREPEND ${PROJECT_SOURCE_DIR}/ OUTPUT_VARIABLE gwq_guide_files)
file(GLOB gwq_manual_tools CONFIGURE_DEPENDS ${PROJECT_SOURCE_DIR}/docs/manual/* ${PROJECT_SOURCE_DIR}/packaging/*.py)
list(TRANSFORM GWQ_PUBLIC_HEADERS PREPEND ${PROJECT_SOURCE_DIR}/src/ OUTPUT_VARIABLE gwq_headers)

add_custom_command(OUTPUT ${gwq_doc_build}/made
  COMMAND ${CMAKE_COMMAND} -E rm -rf ${gwq_doc_build}/manual ${gwq_doc_build}/man ${gwq_doc_build}/guides
  COMMAND ${PROJECT_SOURCE_DIR}/scripts/manual ${gwq_doc_build}/manual
  COMMAND ${gwq_run_python} ${CMAKE_CURRENT_SOURCE_DIR}/make_function_pages.py
    ${gwq_doc_build}/manual/xml ${PROJECT_VERSION} ${gwq_doc_build}/man
  COMMAND ${gwq_run_python} ${CMAKE_CURRENT_SOURCE_DIR}/install_guides.py ${gwq_doc_build}/guides ${gwq_guides}
  COMMAND ${CMAKE_COMMAND} -E touch ${gwq_doc_build}/made
  WORKING_DIRECTORY ${PROJECT_SOURCE_DIR}
  DEPENDS ${gwq_headers} ${gwq_manual_tools} ${PROJECT_SOURCE_DIR}/scripts/manual
    ${PROJECT_SOURCE_DIR}/CMakeLists.txt ${PROJECT_SOURCE_DIR}/src/CMakeLists.txt ${gwq_guide_files}
  COMMENT "Writing the reference manual"
  VERBATIM)
add_custom_target(gwq_documentation ALL DEPENDS ${gwq_doc_build}/made)

install(DIRECTORY ${gwq_doc_build}/guides/ DESTINATION ${gwq_doc_dir} COMPONENT documentation)
install(DIRECTORY ${gwq_doc_build}/manual/html/ DESTINATION ${gwq_doc_dir}/manual COMPONENT documentation)
install(DIRECTORY ${gwq_doc_build}/man/ DESTINATION ${CMAKE_INSTALL_MANDIR}/man3 COMPONENT documentation)
install(DIRECTORY ${PROJECT_SOURCE_DIR}/docs/pictures DESTINATION ${gwq_doc_dir}/docs COMPONENT documentation)
install(DIRECTORY ${PROJECT_SOURCE_DIR}/examples DESTINATION ${gwq_doc_dir} COMPONENT documentation
  PATTERN "__pycache__" EXCLUDE PATTERN ".mypy_cache" EXCLUDE)
# doxygen puts jQuery and its own scripts into the manual.
file(READ ${PROJECT_SOURCE_DIR}/LICENSE gwq_doc_copyright)
file(READ manual-notice gwq_manual_notice)
string(APPEND gwq_doc_copyright "${gwq_manual_notice}")
file(CONFIGURE OUTPUT documentation-copyright CONTENT "${gwq_doc_copyright}" @ONLY)
install(FILES ${CMAKE_CURRENT_BINARY_DIR}/documentation-copyright RENAME copyright
  DESTINATION ${gwq_doc_dir} COMPONENT documentation)

if(TARGET gwq-terminal)
  set(page ${gwq_doc_build}/terminal/gwq-terminal.1.gz)
  add_custom_command(OUTPUT ${page}
    COMMAND ${gwq_run_python} ${CMAKE_CURRENT_SOURCE_DIR}/make_command_page.py
      $<TARGET_FILE:gwq-terminal> ${PROJECT_VERSION} ${gwq_doc_build}/terminal
    DEPENDS gwq-terminal make_command_page.py manual_page.py
    VERBATIM)
  add_custom_target(gwq_terminal_page ALL DEPENDS ${page})
  install(FILES ${page} DESTINATION ${CMAKE_INSTALL_MANDIR}/man1 COMPONENT terminal)
endif()
