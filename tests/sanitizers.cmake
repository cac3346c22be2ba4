# With sanitizers on, every test program brings its own settings for them along.
target_sources(marlune_test_support PRIVATE support/sanitizers.cpp)
if(MARLUNE_SANITIZE)
    # Nothing calls them by name, so the linker has to be asked for them.
    target_link_options(marlune_test_support INTERFACE LINKER:--undefined=__lsan_default_suppressions)
endif()
