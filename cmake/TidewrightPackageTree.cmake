# SPDX-License-Identifier: GPL-3.0-or-later
# The build tree has the shape of the installed package (bin, libexec/tidewright, share/tidewright), so that the
# program runs from it without installing.
set(TIDEWRIGHT_TREE "${PROJECT_BINARY_DIR}")
set(TIDEWRIGHT_LIBEXEC "${TIDEWRIGHT_TREE}/libexec/tidewright")
set(TIDEWRIGHT_SHARE "${TIDEWRIGHT_TREE}/share/tidewright")
set(CMAKE_RUNTIME_OUTPUT_DIRECTORY "${TIDEWRIGHT_TREE}/bin")
file(MAKE_DIRECTORY "${TIDEWRIGHT_LIBEXEC}" "${TIDEWRIGHT_SHARE}")

set(TIDEWRIGHT_KUBECTL "" CACHE FILEPATH "The kubectl that is copied into the package; empty: the one on this machine")

set(TIDEWRIGHT_KUBECTL_SHA256 "" CACHE STRING "The SHA-256 that this kubectl must have; empty: any, which is written down")

# What the package holds of others' making: share/tidewright/manifest.json, read by About and at every start.
function(tidewright_write_manifest kubectl)
    file(SHA256 "${kubectl}" sum)
    if(TIDEWRIGHT_KUBECTL_SHA256 AND NOT sum STREQUAL TIDEWRIGHT_KUBECTL_SHA256)
        message(FATAL_ERROR "${kubectl} has the SHA-256 ${sum}, not ${TIDEWRIGHT_KUBECTL_SHA256}.")
    endif()
    execute_process(COMMAND "${kubectl}" version --client --output=json OUTPUT_VARIABLE told ERROR_QUIET)
    string(JSON version ERROR_VARIABLE problem GET "${told}" clientVersion gitVersion)
    if(problem)
        message(WARNING "${kubectl} does not tell its version: ${problem}")
        set(version "of an unknown version")
    endif()
    file(CONFIGURE OUTPUT "${TIDEWRIGHT_SHARE}/manifest.json" @ONLY CONTENT
        "{\n  \"kubectl\": {\n    \"version\": \"@version@\",\n    \"sha256\": \"@sum@\"\n  }\n}\n")
    install(FILES "${TIDEWRIGHT_SHARE}/manifest.json" DESTINATION share/tidewright)
endfunction()

# Some distributions install a dispatcher that picks one of kubectl.1.NN beside it by asking the server for its
# version first. The package carries one real client, so the newest of those is taken.
function(tidewright_find_kubectl result)
    set(found "${TIDEWRIGHT_KUBECTL}")
    if(NOT found)
        find_program(kubectl_on_machine kubectl NO_CACHE)
        if(kubectl_on_machine)
            file(REAL_PATH "${kubectl_on_machine}" found)
            get_filename_component(folder "${found}" DIRECTORY)
            file(GLOB versioned "${folder}/kubectl.1.*")
            if(versioned)
                list(SORT versioned COMPARE NATURAL ORDER DESCENDING)
                list(GET versioned 0 found)
            endif()
        endif()
    endif()
    set(${result} "${found}" PARENT_SCOPE)
endfunction()

tidewright_find_kubectl(TIDEWRIGHT_PACKAGED_KUBECTL)
if(TIDEWRIGHT_PACKAGED_KUBECTL AND EXISTS "${TIDEWRIGHT_PACKAGED_KUBECTL}")
    message(STATUS "kubectl for the package: ${TIDEWRIGHT_PACKAGED_KUBECTL}")
    file(COPY_FILE "${TIDEWRIGHT_PACKAGED_KUBECTL}" "${TIDEWRIGHT_LIBEXEC}/kubectl" ONLY_IF_DIFFERENT)
    install(PROGRAMS "${TIDEWRIGHT_LIBEXEC}/kubectl" DESTINATION libexec/tidewright)
    tidewright_write_manifest("${TIDEWRIGHT_LIBEXEC}/kubectl")
else()
    message(WARNING "No kubectl found: the program will not start. Install kubernetes-client or set TIDEWRIGHT_KUBECTL.")
endif()
