# SPDX-License-Identifier: GPL-3.0-or-later
find_package(Qt6 REQUIRED COMPONENTS Network Test)

set(TIDEWRIGHT_TEST_KUBECTL_OLD "" CACHE FILEPATH "Debian's older kubectl, run by the tests beside the packaged one")
set(TIDEWRIGHT_TEST_TIMEOUT 240 CACHE STRING "Seconds that one test executable may take")

# Every test executable with the label threads: what the build with ThreadSanitizer needs.
add_custom_target(threaded_tests)

# The sanitizers look for faults of the product: what only tests do is compiled as fast as it goes.
add_library(tidewright_test_options INTERFACE)
if(TIDEWRIGHT_SANITIZE)
    target_compile_options(tidewright_test_options INTERFACE -O0 -fno-sanitize=undefined)
endif()

# One precompiled header for all tests, which therefore link the same Qt libraries.
if(TIDEWRIGHT_PRECOMPILE)
    add_library(test_precompiled OBJECT "${PROJECT_SOURCE_DIR}/tests/support/precompiled.cpp")
    target_link_libraries(test_precompiled PUBLIC Qt6::Widgets Qt6::Svg Qt6::DBus Qt6::Network tidewright_options tidewright_test_options)
    tidewright_precompile(test_precompiled ${TIDEWRIGHT_WIDGET_HEADERS} <QJsonObject> <QProcess> <QTemporaryDir>)
endif()

# tidewright_add_test(NAME tst_x SOURCES ... LIBS ... [DEFINITIONS ...] [LABELS ...] [CHECK_LEAKS])
# One Qt Test executable beside the program's own, so that look-ups in the package tree find the same files.
# CHECK_LEAKS also lets AddressSanitizer look for leaks: for tests without windows, whose libraries keep none.
function(tidewright_add_test)
    cmake_parse_arguments(ARG "CHECK_LEAKS" "NAME" "SOURCES;LIBS;DEFINITIONS;LABELS" ${ARGN})
    add_executable(${ARG_NAME} ${ARG_SOURCES})
    target_link_libraries(${ARG_NAME} PRIVATE ${ARG_LIBS} Qt6::Test tidewright_options tidewright_test_options)
    target_include_directories(${ARG_NAME} PRIVATE "${PROJECT_SOURCE_DIR}/tests")
    target_compile_definitions(${ARG_NAME} PRIVATE ${ARG_DEFINITIONS})
    if(TIDEWRIGHT_PRECOMPILE)
        target_link_libraries(${ARG_NAME} PRIVATE Qt6::Widgets Qt6::Svg Qt6::DBus Qt6::Network)
        target_precompile_headers(${ARG_NAME} REUSE_FROM test_precompiled)
    endif()
    add_test(NAME ${ARG_NAME} COMMAND ${ARG_NAME})
    if("threads" IN_LIST ARG_LABELS)
        add_dependencies(threaded_tests ${ARG_NAME})
    endif()
    set(detect_leaks 0)
    if(ARG_CHECK_LEAKS)
        set(detect_leaks 1)
    endif()
    # die_after_fork=0: the demo cluster has threads, and is a child that a test with threads has forked.
    # A test without settings of its own has those of nobody, not the user's.
    set(environment
        "XDG_CONFIG_HOME=${CMAKE_CURRENT_BINARY_DIR}/${ARG_NAME}-config"
        "QT_QPA_PLATFORM=offscreen"
        "TIDEWRIGHT_TEST_KUBECTL=${TIDEWRIGHT_LIBEXEC}/kubectl"
        "TIDEWRIGHT_TEST_KUBECTL_OLD=${TIDEWRIGHT_TEST_KUBECTL_OLD}"
        "ASAN_OPTIONS=detect_leaks=${detect_leaks}:abort_on_error=0"
        "UBSAN_OPTIONS=print_stacktrace=1"
        "TSAN_OPTIONS=suppressions=${PROJECT_SOURCE_DIR}/cmake/tsan.supp:halt_on_error=1:die_after_fork=0")
    set_tests_properties(${ARG_NAME} PROPERTIES
        ENVIRONMENT "${environment}" TIMEOUT ${TIDEWRIGHT_TEST_TIMEOUT} LABELS "${ARG_LABELS}")
endfunction()
