# GoogleTest, of the sources that its package brings along.
set(sources /usr/src/googletest/googletest)
if(NOT TARGET GTest::gtest)
    find_package(Threads REQUIRED)
    add_library(marlune_gtest STATIC "${sources}/src/gtest-all.cc")
    add_library(GTest::gtest ALIAS marlune_gtest)
    add_library(marlune_gtest_main STATIC "${sources}/src/gtest_main.cc")
    add_library(GTest::gtest_main ALIAS marlune_gtest_main)
    set_target_properties(marlune_gtest marlune_gtest_main PROPERTIES AUTOMOC OFF)
    target_include_directories(marlune_gtest
        SYSTEM PUBLIC "${sources}/include" PRIVATE "${sources}")
    target_link_libraries(marlune_gtest PUBLIC Threads::Threads)
    target_link_libraries(marlune_gtest_main PUBLIC marlune_gtest)
endif()
