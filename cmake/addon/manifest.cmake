# manifest.json: the directory's files and the packages that they come from.

# The packages' versions, which identify their sources.
function(addon_list_packages result)
    get_property(packages GLOBAL PROPERTY addon_packages)
    if(NOT packages)
        set(${result} "" PARENT_SCOPE)
        return()
    endif()
    string(CONCAT format "    {\"name\": \"\${Package}\", \"version\": \"\${Version}\", "
        "\"source\": \"\${source:Package}\", \"source_version\": \"\${source:Version}\", "
        "\"license\": \"licenses/\${Package}.txt\"},\\n")
    execute_process(COMMAND "${DPKG_QUERY}" --show --showformat "${format}" ${packages}
        OUTPUT_VARIABLE list OUTPUT_STRIP_TRAILING_WHITESPACE COMMAND_ERROR_IS_FATAL ANY)
    string(REGEX REPLACE ",$" "" list "${list}")
    set(${result} "${list}" PARENT_SCOPE)
endfunction()

# The newest version of the C and the C++ library that a file in the directory requires.
function(addon_find_required_version prefix result)
    get_property(paths GLOBAL PROPERTY addon_paths)
    list(FILTER paths INCLUDE REGEX "[.](so|exe)([.]|$)")
    list(TRANSFORM paths PREPEND "${ADDON}/")
    execute_process(COMMAND "${READELF}" --version-info --wide "${ADDON}/${LIBRARY_NAME}" ${paths}
        OUTPUT_VARIABLE versions COMMAND_ERROR_IS_FATAL ANY)
    string(REGEX MATCHALL "Name: ${prefix}_[0-9.]+" versions "${versions}")
    list(REMOVE_DUPLICATES versions)
    list(SORT versions COMPARE NATURAL ORDER DESCENDING)
    list(GET versions 0 newest)
    string(REGEX REPLACE ".*_" "" newest "${newest}")
    set(${result} "${newest}" PARENT_SCOPE)
endfunction()

function(addon_write_manifest)
    addon_list_packages(packages)
    addon_find_required_version(GLIBC glibc)
    addon_find_required_version(GLIBCXX glibcxx)

    file(REMOVE "${ADDON}/manifest.json")
    file(GLOB_RECURSE paths RELATIVE "${ADDON}" "${ADDON}/*")
    set(components "")
    set(files "")
    foreach(path IN LISTS paths)
        get_property(component GLOBAL PROPERTY "addon_component_${path}")
        if(path STREQUAL LIBRARY_NAME)
            set(component "marlune")
        elseif(path MATCHES "^licenses/")
            set(component "licences")
        endif()
        get_property(origin GLOBAL PROPERTY "addon_origin_${path}")
        get_property(package GLOBAL PROPERTY "addon_package_of_${origin}")
        file(SIZE "${ADDON}/${path}" size)
        file(SHA256 "${ADDON}/${path}" hash)
        string(APPEND files "    {\"path\": \"${path}\", \"component\": \"${component}\", "
            "\"package\": \"${package}\", \"size\": ${size}, \"sha256\": \"${hash}\"},\n")
        list(APPEND components "${component}")
        math(EXPR size_of_${component} "0${size_of_${component}} + ${size}")
    endforeach()
    list(REMOVE_DUPLICATES components)
    set(sizes "")
    foreach(component IN LISTS components)
        string(APPEND sizes "    \"${component}\": ${size_of_${component}},\n")
    endforeach()
    string(REGEX REPLACE ",\n$" "" files "${files}")
    string(REGEX REPLACE ",\n$" "" sizes "${sizes}")
    file(CONFIGURE OUTPUT "${ADDON}/manifest.json" @ONLY CONTENT [[{
  "name": "marlune",
  "version": "@FULL_VERSION@",
  "qt": "@QT_VERSION@",
  "system": "@SYSTEM@",
  "needs": {"GLIBC": "@glibc@", "GLIBCXX": "@glibcxx@"},
  "sizes": {
@sizes@
  },
  "packages": [
@packages@
  ],
  "files": [
@files@
  ]
}
]])
endfunction()
