# QML modules as Qt resources: enciphered components and plain assets.

# marlune_add_resource_block(<target> <block> <prefix> FILES <file>... ALIASES <name>...)
# Compiles the files into the target as one resource block, each under <prefix>/<name>.
function(marlune_add_resource_block target block prefix)
    cmake_parse_arguments(PARSE_ARGV 3 arg "" "" "FILES;ALIASES")
    set(entries "")
    foreach(file name IN ZIP_LISTS arg_FILES arg_ALIASES)
        string(APPEND entries "    <file alias=\"${name}\">${file}</file>\n")
    endforeach()

    set(qrc "${CMAKE_CURRENT_BINARY_DIR}/resources/${target}_${block}.qrc")
    set(source "${CMAKE_CURRENT_BINARY_DIR}/resources/${target}_${block}.cpp")
    file(CONFIGURE OUTPUT "${qrc}" @ONLY CONTENT
        "<RCC>\n  <qresource prefix=\"${prefix}\">\n@entries@  </qresource>\n</RCC>\n")
    # An explicit format, so that the data do not depend on the version of Qt that builds the library.
    add_custom_command(OUTPUT "${source}"
        COMMAND Qt6::rcc --name "${target}_${block}" --format-version 3 --output "${source}" "${qrc}"
        DEPENDS "${qrc}" ${arg_FILES}
        COMMENT "Compiling resources ${block}"
        VERBATIM)
    set_source_files_properties("${source}" PROPERTIES
        SKIP_AUTOGEN ON SKIP_PRECOMPILE_HEADERS ON GENERATED ON)
    target_sources(${target} PRIVATE "${source}")
endfunction()

# marlune_add_qml_module(<target> NAME <module> BASE_DIR <dir>
#                        [COMPONENTS <file.qml>...] [ASSETS <file>...]
#                        [GENERATED_ASSETS <file> <path>...] [QMLDIR])
# The paths are relative to BASE_DIR. A component is stored as
# :/<module>/qml/<module>/<component>.qml.enc, an asset as :/<module>/<its path>; with QMLDIR, the
# module's qmldir file gets a block of its own, as :/<module>/qmldir. A generated asset is given by its path
# in the build folder and the path that it is stored under.
function(marlune_add_qml_module target)
    cmake_parse_arguments(PARSE_ARGV 1 arg "QMLDIR" "NAME;BASE_DIR"
        "COMPONENTS;ASSETS;GENERATED_ASSETS")
    cmake_path(ABSOLUTE_PATH arg_BASE_DIR NORMALIZE)
    set(files "")
    set(aliases "")

    foreach(component IN LISTS arg_COMPONENTS)
        set(plain "${arg_BASE_DIR}/${component}")
        set(stored "${CMAKE_CURRENT_BINARY_DIR}/resources/${target}/${arg_NAME}/${component}.enc")
        cmake_path(GET stored PARENT_PATH folder)
        file(MAKE_DIRECTORY "${folder}")
        add_custom_command(OUTPUT "${stored}"
            COMMAND marlune_encipher "${plain}" "${stored}"
            DEPENDS "${plain}" marlune_encipher
            COMMENT "Enciphering ${arg_NAME}/${component}"
            VERBATIM)
        list(APPEND files "${stored}")
        list(APPEND aliases "qml/${arg_NAME}/${component}.enc")
    endforeach()
    foreach(asset IN LISTS arg_ASSETS)
        list(APPEND files "${arg_BASE_DIR}/${asset}")
        list(APPEND aliases "${asset}")
    endforeach()
    while(arg_GENERATED_ASSETS)
        list(POP_FRONT arg_GENERATED_ASSETS file alias)
        list(APPEND files "${file}")
        list(APPEND aliases "${alias}")
    endwhile()

    marlune_add_resource_block(${target} ${arg_NAME} "/${arg_NAME}" FILES ${files} ALIASES ${aliases})
    if(arg_QMLDIR)
        marlune_add_resource_block(${target} ${arg_NAME}_qmldir "/${arg_NAME}"
            FILES "${arg_BASE_DIR}/qmldir" ALIASES qmldir)
    endif()
endfunction()
