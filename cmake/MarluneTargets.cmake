# The settings that every target of the project shares.
function(marlune_configure_target target)
    set_target_properties(${target} PROPERTIES
        CXX_VISIBILITY_PRESET hidden
        VISIBILITY_INLINES_HIDDEN ON
        POSITION_INDEPENDENT_CODE ON)
    if(MSVC)
        target_compile_options(${target} PRIVATE /W4 /utf-8 /Zc:__cplusplus /permissive-
            /wd4251 /wd4275)  # the host is built with the same compiler and runtime as the library
        target_compile_definitions(${target} PRIVATE NOMINMAX _CRT_SECURE_NO_WARNINGS)
    else()
        target_compile_options(${target} PRIVATE -Wall -Wextra -Wpedantic)
    endif()
    if(MARLUNE_SANITIZE)
        target_compile_options(${target} PRIVATE
            -fsanitize=address,undefined -fno-sanitize-recover=undefined -fno-omit-frame-pointer
            # It takes objects of classes without type information, as the web engine's are, for none.
            -fno-sanitize=vptr
            $<$<CXX_COMPILER_ID:GNU>:-Wno-maybe-uninitialized>)  # GCC sees ghosts in such code
        target_link_options(${target} PRIVATE -fsanitize=address,undefined)
    endif()
endfunction()

# marlune_compile_strictly(<target>)
# What the library is made of, and what moc makes of it, keeps to conversions that are written down: MSVC
# warns of the others, and a Windows machine is not always at hand.
function(marlune_compile_strictly target)
    if(NOT MSVC)
        target_compile_options(${target} PRIVATE
            -Wconversion -Wsign-conversion -Wshadow -Wold-style-cast -Wextra-semi)
    endif()
endfunction()
