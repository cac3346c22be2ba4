# Screens of X servers that the tests start, with known windows on them.

add_library(marlune_screen_support STATIC support/host_screen_view.cpp support/screen_server.cpp)
marlune_configure_target(marlune_screen_support)
set_target_properties(marlune_screen_support PROPERTIES AUTOMOC OFF)
target_link_libraries(marlune_screen_support PUBLIC marlune_test_support PRIVATE xcb xcb-randr)

# Screens through their facade. A display and its screens are those of the whole program.
foreach(name IN ITEMS media_screen media_screens)
    marlune_add_test(${name} LABELS media SOURCES ${name}.cpp LIBRARIES marlune_screen_support)
endforeach()

# Displays that refuse to be captured, and processes that end while they capture.
marlune_add_test(media_screen_process
    LABELS media SOURCES media_screen_process.cpp LIBRARIES marlune_screen_support OWN_MAIN)
