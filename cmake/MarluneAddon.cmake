# The add-on directory as a game ships it: the library with the files of Qt and others that it needs, so
# that it runs where Qt is not installed. It is the install component "addon"; ./dev addon installs it alone.

# Other systems have tools of their own for this; on Windows it is windeployqt.
set(can_install_qt OFF)
find_program(PATCHELF_PROGRAM patchelf)
if(CMAKE_SYSTEM_NAME STREQUAL "Linux" AND PROJECT_IS_TOP_LEVEL AND PATCHELF_PROGRAM)
    set(can_install_qt ON)
endif()
option(MARLUNE_INSTALL_QT
    "Install a whole add-on directory, with Qt in it, instead of the library alone" ${can_install_qt})

set(marlune_library_dir "${CMAKE_INSTALL_LIBDIR}")
if(MARLUNE_INSTALL_QT)
    set(marlune_library_dir addons/webview)
    # DT_RPATH takes precedence over LD_LIBRARY_PATH: the libraries in the directory belong together, and
    # none of another Qt may be mixed in.
    set_target_properties(marlune PROPERTIES INSTALL_RPATH "\$ORIGIN/lib")
    target_link_options(marlune PRIVATE LINKER:--disable-new-dtags)
endif()

# Plugins, which no link command names, by the libraries that need them.
set(marlune_addon_plugins
    platforms/libqxcb.so  # every view: Qt's connection to the display
    xcbglintegrations/libqxcb-egl-integration.so  # the web engine asks for OpenGL by one of the two
    xcbglintegrations/libqxcb-glx-integration.so
    multimedia/libffmpegmediaplugin.so  # videos, cameras, recordings
    imageformats/libqjpeg.so  # frames of cameras that deliver JPEG; images in scenes
    imageformats/libqsvg.so  # the icons of the players' controls
    tls/libqopensslbackend.so)  # requests of scenes by HTTPS

# Libraries that are opened by name at run time, and so are in no list of dependencies.
set(marlune_addon_opened_libraries
    libsoftokn3.so libfreebl3.so libfreeblpriv3.so libnssckbi.so)  # the web engine's cryptography

# The web engine's data, without the pages of its developer tools, which the library does not offer.
set(marlune_addon_resources
    icudtl.dat
    v8_context_snapshot.bin
    qtwebengine_resources.pak
    qtwebengine_resources_100p.pak
    qtwebengine_resources_200p.pak)

# marlune_compile_qt_configuration(<output>)
# Compiles a qt.conf to a resource file, which the library registers if it is there.
function(marlune_compile_qt_configuration output)
    get_target_property(rcc Qt6::rcc IMPORTED_LOCATION)
    set(qrc "${CMAKE_CURRENT_BINARY_DIR}/addon/qt.qrc")
    file(CONFIGURE OUTPUT "${qrc}" @ONLY CONTENT [[
<RCC>
  <qresource prefix="/qt/etc"><file alias="qt.conf">@PROJECT_SOURCE_DIR@/cmake/addon/qt.conf</file></qresource>
</RCC>
]])
    execute_process(COMMAND "${rcc}" --binary --output "${output}" "${qrc}" COMMAND_ERROR_IS_FATAL ANY)
endfunction()

# marlune_install_addon()
function(marlune_install_addon)
    foreach(program IN ITEMS patchelf strip readelf objdump)
        string(TOUPPER "${program}_PROGRAM" variable)
        find_program(${variable} ${program} REQUIRED)
    endforeach()
    find_program(DPKG_QUERY_PROGRAM dpkg-query)  # tells versions and licences, where there is one

    set(settings "")
    foreach(query IN ITEMS QML PLUGINS LIBEXECS DATA TRANSLATIONS LIBS)
        get_target_property(qmake Qt6::qmake IMPORTED_LOCATION)
        execute_process(COMMAND "${qmake}" -query QT_INSTALL_${query}
            OUTPUT_VARIABLE path OUTPUT_STRIP_TRAILING_WHITESPACE COMMAND_ERROR_IS_FATAL ANY)
        string(APPEND settings "set(QT_${query} [==[${path}]==])\n")
    endforeach()
    execute_process(COMMAND "${qmake}" -query QT_HOST_LIBEXECS
        OUTPUT_VARIABLE tools OUTPUT_STRIP_TRAILING_WHITESPACE COMMAND_ERROR_IS_FATAL ANY)
    foreach(variable IN ITEMS PATCHELF STRIP READELF OBJDUMP DPKG_QUERY)
        string(APPEND settings "set(${variable} [==[${${variable}_PROGRAM}]==])\n")
    endforeach()
    set(configuration "${CMAKE_CURRENT_BINARY_DIR}/addon/qt.rcc")
    marlune_compile_qt_configuration("${configuration}")
    foreach(variable IN ITEMS PLUGINS OPENED_LIBRARIES RESOURCES)
        string(TOLOWER "${variable}" name)
        string(APPEND settings "set(${variable} [==[${marlune_addon_${name}}]==])\n")
    endforeach()
    string(APPEND settings
        "set(IMPORT_SCANNER [==[${tools}/qmlimportscanner]==])\n"
        "set(QT_CONFIGURATION [==[${configuration}]==])\n"
        "set(QT_VERSION [==[${Qt6_VERSION}]==])\n"
        "set(FULL_VERSION [==[${MARLUNE_FULL_VERSION}]==])\n"
        "set(SYSTEM [==[${CMAKE_SYSTEM_NAME} ${CMAKE_SYSTEM_PROCESSOR}]==])\n"
        "set(SOURCE_DIR [==[${PROJECT_SOURCE_DIR}]==])\n"
        "set(LIBRARY_NAME [==[$<TARGET_FILE_NAME:marlune>]==])\n")
    install(CODE "${settings}" COMPONENT addon)
    install(SCRIPT "${PROJECT_SOURCE_DIR}/cmake/addon/lay_out.cmake" COMPONENT addon)
endfunction()
