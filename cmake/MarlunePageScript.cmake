# The page script: Qt's script and our own, joined and minified.

# Used without bundling and renaming, so that the script's globals keep their names.
# On Windows npm installs a command file, and beside it a shell script without a suffix.
find_program(ESBUILD_PROGRAM NAMES esbuild.exe esbuild.cmd esbuild)
if(NOT ESBUILD_PROGRAM)
    message(FATAL_ERROR "esbuild is needed to minify the page script. It is one program: install the "
        "package esbuild, or set ESBUILD_PROGRAM to where it is.")
endif()

# marlune_add_page_script(<output> <source>)
function(marlune_add_page_script output source)
    set(joined "${CMAKE_CURRENT_BINARY_DIR}/page_script/joined.js")
    cmake_path(GET joined PARENT_PATH folder)
    file(MAKE_DIRECTORY "${folder}")
    add_custom_command(OUTPUT "${joined}"
        COMMAND marlune_extract_resource "${joined}" ":/qtwebchannel/qwebchannel.js" "${source}"
        DEPENDS "${source}" marlune_extract_resource
        COMMENT "Joining the page script"
        VERBATIM)
    # Minifying removes comments, including the notice that Qt's licence requires.
    string(CONCAT notice "qwebchannel.js: (C) The Qt Company Ltd., Klaralvdalens Datakonsult AB; "
        "LicenseRef-Qt-Commercial OR LGPL-3.0-only OR GPL-2.0-only OR GPL-3.0-only. godot.js: MIT")
    add_custom_command(OUTPUT "${output}"
        COMMAND "${ESBUILD_PROGRAM}" "${joined}" "--outfile=${output}" --log-level=warning
            --minify-whitespace --minify-syntax --target=es2020 --charset=utf8
            "--banner:js=/*! ${notice} */"
        DEPENDS "${joined}"
        COMMENT "Minifying the page script"
        VERBATIM)
endfunction()
