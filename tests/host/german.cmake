# Repeats programs of hosts for a user whose language writes numbers with commas.
if(NOT EXISTS /usr/share/i18n/locales/de_DE)
    add_test(NAME german COMMAND "${CMAKE_COMMAND}" -E echo "skipped: the package locales is not installed")
    set_tests_properties(german PROPERTIES LABELS host SKIP_REGULAR_EXPRESSION "^skipped")
    return()
endif()

set(locales "${CMAKE_CURRENT_BINARY_DIR}/locales")
file(MAKE_DIRECTORY "${locales}")
add_test(NAME german_locale
    COMMAND localedef --inputfile=de_DE --charmap=UTF-8 "${locales}/de_DE.UTF-8")
set_tests_properties(german_locale PROPERTIES LABELS host TIMEOUT 60 FIXTURES_SETUP german_locale)

foreach(name IN ITEMS host_context host_frames host_load host_resolution host_screens)
    marlune_run_again(${name} german LABELS host TIMEOUT 120
        ENVIRONMENT "LOCPATH=${locales}" LC_ALL=de_DE.UTF-8)
    set_tests_properties(${name}_german PROPERTIES FIXTURES_REQUIRED german_locale)
endforeach()
