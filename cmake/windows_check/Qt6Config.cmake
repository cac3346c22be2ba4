# A Qt for Windows to compile with and to check with, for none is to be had as a package: the headers
# and tools of this system's Qt, and import libraries that are made from the names that its libraries
# export. What is linked with it cannot run.

function(marlune_query_qt property variable)
    execute_process(COMMAND qmake6 -query "${property}"
        OUTPUT_VARIABLE value OUTPUT_STRIP_TRAILING_WHITESPACE COMMAND_ERROR_IS_FATAL ANY)
    set(${variable} "${value}" PARENT_SCOPE)
endfunction()

marlune_query_qt(QT_INSTALL_HEADERS qt_headers)
marlune_query_qt(QT_INSTALL_LIBS qt_libraries)
marlune_query_qt(QT_HOST_LIBEXECS qt_tools)

# AUTOMOC asks for the version by this name.
string(REGEX MATCH "^[0-9]+" Qt6Core_VERSION_MAJOR "${Qt6_VERSION}")
string(REGEX MATCH "[.]([0-9]+)[.]" _ "${Qt6_VERSION}")
set(Qt6Core_VERSION_MINOR "${CMAKE_MATCH_1}")

foreach(tool IN ITEMS moc rcc)
    if(NOT TARGET Qt6::${tool})
        add_executable(Qt6::${tool} IMPORTED GLOBAL)
        set_target_properties(Qt6::${tool} PROPERTIES IMPORTED_LOCATION "${qt_tools}/${tool}")
    endif()
endforeach()

# marlune_stand_in(<module> [<module that it uses>...])
function(marlune_stand_in module)
    if(TARGET Qt6::${module})
        return()
    endif()
    set(folder "${qt_headers}/Qt${module}")
    set(library "${CMAKE_BINARY_DIR}/stand_ins/lib/libQt6${module}.dll.a")
    set_property(GLOBAL APPEND PROPERTY MARLUNE_STAND_INS "${module}")
    set_property(GLOBAL APPEND PROPERTY MARLUNE_STAND_IN_LIBRARIES "${library}")
    list(TRANSFORM ARGN PREPEND Qt6:: OUTPUT_VARIABLE used)
    add_library(Qt6::${module} INTERFACE IMPORTED GLOBAL)
    target_include_directories(Qt6::${module} INTERFACE "${qt_headers}" "${folder}")
    target_link_libraries(Qt6::${module} INTERFACE "${library}" ${used})

    list(TRANSFORM used APPEND Private)
    add_library(Qt6::${module}Private INTERFACE IMPORTED GLOBAL)
    target_include_directories(Qt6::${module}Private INTERFACE
        "${folder}/${Qt6_VERSION}" "${folder}/${Qt6_VERSION}/Qt${module}")
    target_link_libraries(Qt6::${module}Private INTERFACE Qt6::${module} ${used})
endfunction()

marlune_stand_in(Core)
marlune_stand_in(Network Core)
marlune_stand_in(Gui Core)
marlune_stand_in(OpenGL Gui)
marlune_stand_in(Widgets Gui)
marlune_stand_in(Qml Network)
marlune_stand_in(QmlModels Qml)
marlune_stand_in(Quick Gui QmlModels OpenGL)
marlune_stand_in(Multimedia Gui Network)
marlune_stand_in(Positioning Core)
marlune_stand_in(WebChannel Qml)
marlune_stand_in(WebEngineCore Gui Network WebChannel Positioning)
marlune_stand_in(WebEngineQuick WebEngineCore Quick)

# What a Qt for Windows asks of those that use it.
target_include_directories(Qt6::Core INTERFACE "${CMAKE_CURRENT_LIST_DIR}/include")
target_compile_definitions(Qt6::Core INTERFACE UNICODE _UNICODE WIN32 WIN64 NOMINMAX)

# The import libraries are made when it is known what the library's objects need.
function(marlune_make_import_libraries)
    get_property(modules GLOBAL PROPERTY MARLUNE_STAND_INS)
    get_property(libraries GLOBAL PROPERTY MARLUNE_STAND_IN_LIBRARIES)
    set(script "${CMAKE_CURRENT_FUNCTION_LIST_DIR}/make_import_libraries.sh")
    set(objects "${CMAKE_BINARY_DIR}/stand_ins/objects.txt")
    set(all "$<TARGET_OBJECTS:marlune_objects>" "$<TARGET_OBJECTS:marlune_qml>")
    set(list "$<FILTER:${all},INCLUDE,[.]obj$>")  # no precompiled header
    file(GENERATE OUTPUT "${objects}" CONTENT "$<JOIN:${list},\n>\n")
    add_custom_command(OUTPUT ${libraries}
        COMMAND "${script}" "${qt_libraries}" "${CMAKE_BINARY_DIR}/stand_ins/lib" "${objects}" ${modules}
        DEPENDS "${script}" "${objects}" "${list}"
        COMMENT "Making import libraries that stand in for Qt's: for checking, not for shipping"
        VERBATIM COMMAND_EXPAND_LISTS)
    add_custom_target(marlune_import_libraries DEPENDS ${libraries})
    add_dependencies(marlune marlune_import_libraries)
endfunction()
cmake_language(DEFER CALL marlune_make_import_libraries)
