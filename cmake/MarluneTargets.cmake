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
            # It reports objects of classes without RTTI, such as the web engine's, as invalid.
            -fno-sanitize=vptr
            $<$<CXX_COMPILER_ID:GNU>:-Wno-maybe-uninitialized>)  # false warnings of GCC in such code
        target_link_options(${target} PRIVATE -fsanitize=address,undefined)
    endif()
endfunction()

# marlune_compile_strictly(<target>)
# Requires explicit conversions in the library's sources and in moc's output: MSVC warns of implicit ones,
# and a Windows machine is not always at hand.
function(marlune_compile_strictly target)
    if(NOT MSVC)
        target_compile_options(${target} PRIVATE
            -Wconversion -Wsign-conversion -Wshadow -Wold-style-cast -Wextra-semi)
    endif()
endfunction()
