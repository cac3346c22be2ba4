# Creates a project root like a game's, with links to the machine's Qt under the names that the library
# expects. For running from the build folder; it is not installed.
function(marlune_lay_out_project_root project_root)
    if(WIN32)
        return()  # Links need privileges there; windeployqt makes the real directory.
    endif()
    get_target_property(qmake Qt6::qmake IMPORTED_LOCATION)
    set(addon "${project_root}/addons/webview")
    file(MAKE_DIRECTORY "${addon}/translations")
    foreach(link IN ITEMS
            "qml|QT_INSTALL_QML|"
            "plugins|QT_INSTALL_PLUGINS|"
            "QtWebEngineProcess.exe|QT_INSTALL_LIBEXECS|/QtWebEngineProcess"
            "resources|QT_INSTALL_DATA|/resources"
            "translations/qtwebengine_locales|QT_INSTALL_TRANSLATIONS|/qtwebengine_locales")
        string(REGEX MATCH "(.*)[|](.*)[|](.*)" _ "${link}")
        set(name "${CMAKE_MATCH_1}")
        set(suffix "${CMAKE_MATCH_3}")
        execute_process(COMMAND "${qmake}" -query "${CMAKE_MATCH_2}"
            OUTPUT_VARIABLE path OUTPUT_STRIP_TRAILING_WHITESPACE COMMAND_ERROR_IS_FATAL ANY)
        if(NOT EXISTS "${path}${suffix}")
            message(FATAL_ERROR "This Qt has no ${path}${suffix}, which the add-on directory needs as ${name}")
        endif()
        file(CREATE_LINK "${path}${suffix}" "${addon}/${name}" SYMBOLIC)
    endforeach()
endfunction()
