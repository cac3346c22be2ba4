# Checks that the library exports exactly the names in exports.txt. A missing name breaks hosts; a new
# one is a promise.
cmake_minimum_required(VERSION 3.25)
include("${CMAKE_CURRENT_LIST_DIR}/compare.cmake")

execute_process(COMMAND "${NM}" -D -C -j --defined-only "${LIBRARY}"
    OUTPUT_VARIABLE symbols OUTPUT_STRIP_TRAILING_WHITESPACE COMMAND_ERROR_IS_FATAL ANY)
string(REPLACE "\n" ";" symbols "${symbols}")
list(REMOVE_DUPLICATES symbols)  # a constructor has two symbols of one name
file(STRINGS "${CMAKE_CURRENT_LIST_DIR}/exports.txt" expected)
compare_lists("The exported names are" EXPECTED expected ACTUAL symbols
    REMEDY "Mend the library, or tests/deploy/exports.txt where the change is wanted")
