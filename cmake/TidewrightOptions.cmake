# SPDX-License-Identifier: GPL-3.0-or-later
# Warnings and strict Qt defines, in one INTERFACE target that every library of the product links.
add_library(tidewright_options INTERFACE)
target_compile_options(tidewright_options INTERFACE
    -Wall -Wextra -Wpedantic -Wshadow -Wnon-virtual-dtor -Woverloaded-virtual -Wcast-align)
if(TIDEWRIGHT_WERROR)
    target_compile_options(tidewright_options INTERFACE -Werror)
endif()
target_compile_definitions(tidewright_options INTERFACE
    QT_NO_CAST_FROM_ASCII
    QT_NO_CAST_TO_ASCII
    QT_NO_CAST_FROM_BYTEARRAY
    QT_NO_URL_CAST_FROM_STRING
    QT_NO_KEYWORDS
    QT_NO_FOREACH
    QT_NO_NARROWING_CONVERSIONS_IN_CONNECT
    QT_STRICT_ITERATORS
    QT_USE_QSTRINGBUILDER
    QT_DISABLE_DEPRECATED_BEFORE=0x060400)

if(TIDEWRIGHT_SANITIZE)
    # Every target is instrumented, the tests and the demo cluster too: a half-instrumented program proves little.
    add_compile_options(-fsanitize=${TIDEWRIGHT_SANITIZE} -fno-omit-frame-pointer -fno-sanitize-recover=all)
    add_link_options(-fsanitize=${TIDEWRIGHT_SANITIZE})
    # GCC's maybe-uninitialized warning misfires in instrumented code.
    target_compile_options(tidewright_options INTERFACE -Wno-maybe-uninitialized)
endif()

# What makes a fault in the program an end instead of somebody's way in. FORTIFY needs optimised code; the two guards, which
# are small, always have it, all else in optimised builds. What uses Qt is compiled with -fPIC, which Qt asks for.
include(CheckCXXCompilerFlag)
check_cxx_compiler_flag(-fcf-protection TIDEWRIGHT_HAS_CF_PROTECTION)
add_library(tidewright_hardening INTERFACE)
target_compile_options(tidewright_hardening INTERFACE
    -fstack-protector-strong -U_FORTIFY_SOURCE -D_FORTIFY_SOURCE=3 -D_GLIBCXX_ASSERTIONS
    $<$<BOOL:${TIDEWRIGHT_HAS_CF_PROTECTION}>:-fcf-protection>)
target_link_options(tidewright_hardening INTERFACE -pie LINKER:-z,relro LINKER:-z,now)
string(TOUPPER "CMAKE_CXX_FLAGS_${CMAKE_BUILD_TYPE}" flags_of_type)
set(TIDEWRIGHT_HARDENED OFF)
if("${CMAKE_CXX_FLAGS} ${${flags_of_type}}" MATCHES "-O[123s]" AND NOT TIDEWRIGHT_SANITIZE)
    set(TIDEWRIGHT_HARDENED ON)
    target_link_libraries(tidewright_options INTERFACE tidewright_hardening)
endif()

# Headers that nearly every file of a folder reads, parsed once per target. Off in the dev preset, where each file has
# to name for itself what it uses.
option(TIDEWRIGHT_PRECOMPILE "Precompile the most used headers" OFF)
function(tidewright_precompile target)
    if(TIDEWRIGHT_PRECOMPILE)
        target_precompile_headers(${target} PRIVATE
            <algorithm> <functional> <memory> <mutex> <optional> <vector> ${ARGN})
    endif()
endfunction()

# Compiles sixteen files of a target at a time: a third of the processor time from nothing, and more for a change of one
# file. In the dev preset each file is compiled by itself and has to name what it uses.
option(TIDEWRIGHT_UNITY "Compile many files at a time" OFF)
function(tidewright_unity target)
    set_target_properties(${target} PROPERTIES UNITY_BUILD ${TIDEWRIGHT_UNITY} UNITY_BUILD_BATCH_SIZE 16)
endfunction()

set(TIDEWRIGHT_CORE_HEADERS
    <QCoreApplication> <QDateTime> <QDir> <QFile> <QHash> <QPointer> <QRegularExpression> <QStringList> <QTimer>)
set(TIDEWRIGHT_WIDGET_HEADERS ${TIDEWRIGHT_CORE_HEADERS}
    <QAbstractTableModel> <QApplication> <QBoxLayout> <QKeyEvent> <QLabel> <QLineEdit> <QMenu> <QPainter> <QPushButton>)

# A static library: a layer, or those of its rooms that draw nothing: tidewright_layer(core SOURCES ... LIBS ...
# [PRIVATE_LIBS ...] [WINDOWLESS]). WINDOWLESS: it does not link Qt Widgets.
function(tidewright_layer name)
    cmake_parse_arguments(ARG "WINDOWLESS" "" "SOURCES;LIBS;PRIVATE_LIBS" ${ARGN})
    add_library(tidewright_${name} STATIC ${ARG_SOURCES})
    target_include_directories(tidewright_${name} PUBLIC "${PROJECT_SOURCE_DIR}/src")
    target_link_libraries(tidewright_${name} PUBLIC ${ARG_LIBS} PRIVATE ${ARG_PRIVATE_LIBS} tidewright_options)
    tidewright_unity(tidewright_${name})
    if(TIDEWRIGHT_UNITY AND NOT name STREQUAL "rows") # whose kinds are compiled by themselves
        return()
    endif()
    if(ARG_WINDOWLESS)
        tidewright_precompile(tidewright_${name} ${TIDEWRIGHT_CORE_HEADERS})
    else()
        tidewright_precompile(tidewright_${name} ${TIDEWRIGHT_WIDGET_HEADERS})
    endif()
endfunction()
