# Reads the export table of a library that MSVC has linked. The names are those that the library exports
# elsewhere. Parameters are not compared, because MSVC writes types in its own way, and neither are the
# functions of classes that it exports automatically: constructors, assignments, tables.
cmake_minimum_required(VERSION 3.25)
include("${CMAKE_CURRENT_LIST_DIR}/../deploy/compare.cmake")

execute_process(COMMAND "${DUMPBIN}" /nologo /exports "${LIBRARY}"
    OUTPUT_VARIABLE table COMMAND_ERROR_IS_FATAL ANY)

# A name such as "?render@MView@marlune@@QEBAXXZ": inside first, and the type behind "@@". Constructors
# and the like begin with "??".
string(REGEX MATCHALL " [?][A-Za-z_][A-Za-z0-9_]*@([A-Za-z0-9_]+@)*@" symbols "${table}")
set(names "")
foreach(symbol IN LISTS symbols)
    string(REGEX MATCHALL "[A-Za-z0-9_]+" parts "${symbol}")
    list(REVERSE parts)
    list(JOIN parts "::" name)
    list(APPEND names "${name}")
endforeach()
list(REMOVE_DUPLICATES names)

file(STRINGS "${CMAKE_CURRENT_LIST_DIR}/../deploy/exports.txt" lines)
list(FILTER lines EXCLUDE REGEX "^(typeinfo|vtable) |operator=|::~")
list(TRANSFORM lines REPLACE "[[(].*" "")
list(REMOVE_DUPLICATES lines)
set(expected "")
foreach(name IN LISTS lines)
    string(REGEX MATCH "([A-Za-z]+)::([A-Za-z]+)$" is_member "${name}")
    if(NOT is_member OR NOT CMAKE_MATCH_1 STREQUAL CMAKE_MATCH_2)
        list(APPEND expected "${name}")
    endif()
endforeach()
compare_lists("The names that MSVC exports are" EXPECTED expected ACTUAL names
    REMEDY "Mend the library, or tests/deploy/exports.txt where the change is wanted")
