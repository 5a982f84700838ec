# SPDX-License-Identifier: MIT
# What tests of applications use: the target ZvIptv::Testing and the function zviptv_add_television_test. Included by
# find_package(ZvIptvServiceApi).
#
# ZvIptv::Testing          the headers <zviptv/testing/...>, with GIO
# ZVIPTV_SIM_PROGRAM       zviptv-sim
# ZVIPTV_SAMPLE            the transport stream that tests play by default

find_program(ZVIPTV_SIM_PROGRAM zviptv-sim HINTS "${PACKAGE_PREFIX_DIR}/bin" DOC "The simulator that tests run in")
find_file(ZVIPTV_SAMPLE sample.ts HINTS "${PACKAGE_PREFIX_DIR}/share/zv-iptv/samples" PATHS /usr/share/zv-iptv/samples
    NO_DEFAULT_PATH DOC "Transport stream that tests play by default")

set(ZvIptvServiceApi_Testing_FOUND FALSE)
find_package(PkgConfig QUIET)
if(PKG_CONFIG_FOUND)
    pkg_check_modules(ZVIPTV_GIO QUIET IMPORTED_TARGET gio-2.0)
endif()
if(ZVIPTV_GIO_FOUND AND NOT TARGET ZvIptv::Testing)
    add_library(ZvIptv::Testing INTERFACE IMPORTED)
    target_include_directories(ZvIptv::Testing INTERFACE
        $<TARGET_PROPERTY:ZvIptv::ServiceApi,INTERFACE_INCLUDE_DIRECTORIES>)
    target_compile_features(ZvIptv::Testing INTERFACE cxx_std_17)
    target_link_libraries(ZvIptv::Testing INTERFACE PkgConfig::ZVIPTV_GIO)
endif()
if(TARGET ZvIptv::Testing)
    set(ZvIptvServiceApi_Testing_FOUND TRUE)
endif()

# zviptv_add_television_test(NAME <name> COMMAND <command> [<argument>...]
#     [INPUT <stream>] [SCENARIO <file>] [GUIDE <file>] [OPTIONS <option>...])
#
# Adds a test that runs the command in the simulator, on a private bus. The test fails if the command fails or an
# expectation of the scenario is not met; <name>.xml in the current build folder is the scenario's report. INPUT is played
# in a loop; without it, the sample stream. OPTIONS are options of zviptv-sim. The command may be an executable target.
# Relative files are below the current source folder. Properties can be set with set_tests_properties(<name> ...).
function(zviptv_add_television_test)
    cmake_parse_arguments(PARSE_ARGV 0 test "" "NAME;INPUT;SCENARIO;GUIDE" "COMMAND;OPTIONS")
    if(test_UNPARSED_ARGUMENTS OR test_KEYWORDS_MISSING_VALUES)
        message(FATAL_ERROR "zviptv_add_television_test: unexpected or incomplete argument "
            "'${test_UNPARSED_ARGUMENTS}${test_KEYWORDS_MISSING_VALUES}'; "
            "use NAME, COMMAND, INPUT, SCENARIO, GUIDE and OPTIONS, each with a value")
    endif()
    if(NOT test_NAME OR NOT test_COMMAND)
        message(FATAL_ERROR "zviptv_add_television_test: NAME or COMMAND is missing; give both")
    endif()
    if(NOT ZVIPTV_SIM_PROGRAM)
        message(FATAL_ERROR "zviptv_add_television_test: zviptv-sim was not found; "
            "install the package zv-iptv-tools, or set ZVIPTV_SIM_PROGRAM to its path")
    endif()
    if(NOT test_INPUT)
        if(NOT ZVIPTV_SAMPLE)
            message(FATAL_ERROR "zviptv_add_television_test: the sample stream was not found; "
                "give INPUT, or set ZVIPTV_SAMPLE to a transport stream")
        endif()
        set(test_INPUT "${ZVIPTV_SAMPLE}")
    endif()
    if(NOT test_INPUT MATCHES "://") # live input cannot be looped
        cmake_path(ABSOLUTE_PATH test_INPUT BASE_DIRECTORY "${CMAKE_CURRENT_SOURCE_DIR}")
        list(APPEND test_OPTIONS --loop)
    endif()
    set(options --ts "${test_INPUT}" ${test_OPTIONS})
    if(test_GUIDE)
        cmake_path(ABSOLUTE_PATH test_GUIDE BASE_DIRECTORY "${CMAKE_CURRENT_SOURCE_DIR}")
        list(APPEND options --guide "${test_GUIDE}")
    endif()
    if(test_SCENARIO)
        cmake_path(ABSOLUTE_PATH test_SCENARIO BASE_DIRECTORY "${CMAKE_CURRENT_SOURCE_DIR}")
        list(APPEND options --scenario "${test_SCENARIO}" --junit "${CMAKE_CURRENT_BINARY_DIR}/${test_NAME}.xml")
    endif()
    list(POP_FRONT test_COMMAND program)
    if(TARGET "${program}")
        set(program "$<TARGET_FILE:${program}>")
    endif()
    add_test(NAME "${test_NAME}" COMMAND "${ZVIPTV_SIM_PROGRAM}" ${options} -- "${program}" ${test_COMMAND})
endfunction()
