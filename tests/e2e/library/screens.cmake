# SPDX-License-Identifier: MIT
# Sessions of the customer screens, and of cancelling what waits for the customer.
find_package(PNG REQUIRED)
find_package(nlohmann_json REQUIRED)

add_executable(e2e_screens
  cancel_cycles_test.cpp
  documents_test.cpp
  library.cpp
  pages_test.cpp
  png.cpp
  terminal_itself_test.cpp
  text_screens_test.cpp
  usb_watch.cpp
  ${PROJECT_SOURCE_DIR}/examples/demo/bank_keys.cpp
  ${PROJECT_SOURCE_DIR}/examples/demo/bank_pad.cpp)
target_include_directories(e2e_screens PRIVATE ${PROJECT_SOURCE_DIR}/tests ${PROJECT_BINARY_DIR}/include ${PROJECT_SOURCE_DIR}/src
  ${PROJECT_SOURCE_DIR}/examples/demo ${PROJECT_BINARY_DIR}/generated)
target_link_libraries(e2e_screens PRIVATE gwq_temp_dir OpenSSL::Crypto PNG::PNG nlohmann_json::nlohmann_json GTest::gmock
  GTest::gtest_main ${CMAKE_DL_LIBS})
target_compile_definitions(e2e_screens PRIVATE GWQ_LIBRARY_FILE="$<TARGET_FILE:gwq>")
# The library is to find the program's libusb functions and clock.
set_target_properties(e2e_screens PROPERTIES ENABLE_EXPORTS ON)
add_dependencies(e2e_screens gwq gwq-terminal)

# Runs the tests of a suite under a terminal of its own, whose files the tests can look at.
function(gwq_add_screen_session suite)
  set(storage ${CMAKE_CURRENT_BINARY_DIR}/storage/${suite})
  add_test(NAME e2e.library.${suite}
    COMMAND ${CMAKE_COMMAND} -E env GWQ_TEST_STORAGE=${storage}
      $<TARGET_FILE:gwq-terminal> exec --storage ${storage} ${ARGN} --
      $<TARGET_FILE:e2e_screens> --gtest_filter=${suite}.*)
  set_tests_properties(e2e.library.${suite} PROPERTIES LABELS e2e TIMEOUT 240
    FIXTURES_REQUIRED files_storage PASS_REGULAR_EXPRESSION "PASSED  . [1-9]" FAIL_REGULAR_EXPRESSION "FAILED|Sanitizer")
endfunction()

gwq_add_screen_session(TextScreensOnUsb --customer ${customers}/texts.json)
gwq_add_screen_session(TextScreensOnSerial --serial 78 --no-usb --customer ${customers}/texts.json)
gwq_add_screen_session(Rating --customer ${customers}/ratings.json)
gwq_add_screen_session(Checkout --customer ${customers}/checkouts.json)
gwq_add_screen_session(Pages --customer ${customers}/pages.json)
gwq_add_screen_session(Agreements --customer ${customers}/agreements.json)
gwq_add_screen_session(PlainSignatures --customer ${customers}/signatures.json)
gwq_add_screen_session(VoiceSignatures --customer ${customers}/signatures.json)
gwq_add_screen_session(TzgSignatures --customer ${customers}/signatures.json)
gwq_add_screen_session(SignaturesWithoutTzg --no-tzg --customer ${customers}/signatures.json)
gwq_add_screen_session(HandSignatures --customer ${customers}/hand_signatures.json)
gwq_add_screen_session(TerminalItself)
gwq_add_screen_session(WithoutTerminal --no-usb)
foreach(suite CancelledTexts CancelledPages CancelledDocuments CancelledSignatures CancelledPushes CancelledPad
        CancelledPinBlocks CancelledEnciphering)
  gwq_add_screen_session(${suite} --customer ${customers}/away.json)
endforeach()
gwq_add_screen_session(CancelledOnSerial --serial 78 --no-usb --customer ${customers}/away.json)

# These use files of fixed names under /tmp on the host.
set_tests_properties(e2e.library.Pages e2e.library.WithoutTerminal e2e.library.CancelledPages PROPERTIES
  RESOURCE_LOCK page_file)
set_tests_properties(e2e.library.TzgSignatures PROPERTIES RESOURCE_LOCK tzg_data_file)
set_tests_properties(e2e.library.CancelledEnciphering PROPERTIES RESOURCE_LOCK enciphered_text)
