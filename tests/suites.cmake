# Writes to `list` the ctest entries of a test `program`: one for each suite, or for each test of
# the suites in `each`.
cmake_minimum_required(VERSION 3.21)
execute_process(COMMAND ${program} --gtest_list_tests OUTPUT_VARIABLE lines
                COMMAND_ERROR_IS_FATAL ANY)
string(REGEX REPLACE "[ ]+#[^\n]*" "" lines "${lines}") # values of parameters
string(REPLACE "\n" ";" lines "${lines}")
set(entries "")
foreach(line IN LISTS lines)
    if(line MATCHES "^(.*)\\.$")
        set(suite ${CMAKE_MATCH_1})
        set(entry ${suite})
        set(filter ${suite}.*)
    elseif(line MATCHES "^  (.*)$" AND suite IN_LIST each)
        set(entry ${suite}.${CMAKE_MATCH_1})
        set(filter ${entry})
    else()
        continue()
    endif()
    if(entry IN_LIST each)
        continue()
    endif()
    string(APPEND entries "add_test([=[${entry}]=] [=[${program}]=] --gtest_shuffle "
                          "[=[--gtest_filter=${filter}]=])\n")
    if(suite IN_LIST each)
        string(APPEND entries "set_tests_properties([=[${entry}]=] PROPERTIES COST 100)\n")
    endif()
endforeach()
file(WRITE ${list} "${entries}")
