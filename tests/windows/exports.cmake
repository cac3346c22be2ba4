# Reads the export and import tables of the library for Windows. The names are those that the library
# exports elsewhere, except the texts of type names, which no program looks up there. The library needs
# Qt and the libraries of every Windows alone.
cmake_minimum_required(VERSION 3.25)
include("${CMAKE_CURRENT_LIST_DIR}/../deploy/compare.cmake")

execute_process(COMMAND x86_64-w64-mingw32-objdump --private-headers "${LIBRARY}"
    OUTPUT_VARIABLE headers COMMAND_ERROR_IS_FATAL ANY)

# A line of the table: "[ 12] +base[ 13]  000c name".
string(REGEX MATCHALL "[+]base\\[ *[0-9]+\\]  [0-9a-f]+ [^\n]+" lines "${headers}")
list(TRANSFORM lines REPLACE ".* " "" OUTPUT_VARIABLE symbols)
list(JOIN symbols "\n" symbols)
file(WRITE "${LIBRARY}.symbols" "${symbols}\n")
execute_process(COMMAND c++filt INPUT_FILE "${LIBRARY}.symbols"
    OUTPUT_VARIABLE names OUTPUT_STRIP_TRAILING_WHITESPACE COMMAND_ERROR_IS_FATAL ANY)
string(REPLACE "\n" ";" names "${names}")
list(REMOVE_DUPLICATES names)  # a constructor has two symbols of one name

file(STRINGS "${CMAKE_CURRENT_LIST_DIR}/../deploy/exports.txt" expected)
list(FILTER expected EXCLUDE REGEX "^typeinfo name for ")
# Integers of 64 bits are "long" elsewhere.
list(TRANSFORM expected REPLACE "long long" "long")
list(TRANSFORM names REPLACE "long long" "long")
compare_lists("The exported names for Windows are" EXPECTED expected ACTUAL names
    REMEDY "Mend the library, or tests/deploy/exports.txt where the change is wanted")

string(REGEX MATCHALL "DLL Name: [^\n]+" libraries "${headers}")
list(TRANSFORM libraries REPLACE "DLL Name: " "")
set(expected
    KERNEL32.dll msvcrt.dll
    Qt6Core.dll Qt6Gui.dll Qt6Multimedia.dll Qt6Network.dll Qt6Qml.dll Qt6Quick.dll
    Qt6WebChannel.dll Qt6WebEngineCore.dll Qt6WebEngineQuick.dll Qt6Widgets.dll)
compare_lists("The libraries that the library for Windows needs are" EXPECTED expected ACTUAL libraries
    REMEDY "Mend the library, or the list here and in docs/building-windows.md")
