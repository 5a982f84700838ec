# SPDX-License-Identifier: MIT
# Writes FILE, which adds the tests of a program to CTest: an entry for each test, and one for each suite in
# TOGETHER. Run after the program has been linked, with NAME, PROGRAM, EMULATOR, TOGETHER, PROPERTIES and FILE.
cmake_minimum_required(VERSION 3.25)
execute_process(COMMAND ${EMULATOR} "${PROGRAM}" --gtest_list_tests
    OUTPUT_VARIABLE listed TIMEOUT 60 COMMAND_ERROR_IS_FATAL ANY)
string(REGEX REPLACE " *#[^\n]*" "" listed "${listed}") # types and values of parameters
string(REPLACE "\n" ";" listed "${listed}")

set(script "")
function(add_to_script pattern)
    string(CONFIGURE [==[
add_test([=[@NAME@.@pattern@]=] @EMULATOR@ "@PROGRAM@" "--gtest_filter=@filter@")
set_tests_properties([=[@NAME@.@pattern@]=] PROPERTIES @PROPERTIES@)
]==] test @ONLY)
    set(script "${script}${test}" PARENT_SCOPE)
endfunction()

foreach(line IN LISTS listed)
    if(line MATCHES "^([^ ]+)\\.$")
        set(suite "${CMAKE_MATCH_1}")
        string(REGEX REPLACE "^.*/([^0-9].*)$" "\\1" class "${suite}")
        set(together FALSE)
        if(TOGETHER STREQUAL "ALL" OR class IN_LIST TOGETHER)
            set(together TRUE)
            set(filter "${suite}.*")
            add_to_script("${suite}")
        endif()
    elseif(line MATCHES "^  (.+)$" AND NOT together)
        set(filter "${suite}.${CMAKE_MATCH_1}")
        add_to_script("${filter}")
    endif()
endforeach()
file(WRITE "${FILE}" "${script}")
