# Warnings and sanitizers, for every target of ours.
add_library(project_options INTERFACE)
target_compile_options(project_options INTERFACE
    -Wall -Wextra -Wpedantic -Wconversion -Wsign-conversion -Wshadow -Wnon-virtual-dtor
    -Woverloaded-virtual -Wcast-align -Wformat=2 -Wdouble-promotion
    -Wimplicit-fallthrough -Werror
    -fstack-protector-strong $<$<CONFIG:RelWithDebInfo>:-D_FORTIFY_SOURCE=2>
)

set(CORVANE_SANITIZE "" CACHE STRING "Sanitizers to build with, as for -fsanitize")
if(CORVANE_SANITIZE)
    target_compile_options(project_options INTERFACE
        -fsanitize=${CORVANE_SANITIZE} -fno-sanitize-recover=all -fno-omit-frame-pointer
    )
    target_link_options(project_options INTERFACE -fsanitize=${CORVANE_SANITIZE})
endif()

option(CORVANE_COVERAGE "Count which lines and branches the tests reach" OFF)
if(CORVANE_COVERAGE)
    target_compile_options(project_options INTERFACE --coverage -fprofile-update=atomic)
    target_link_options(project_options INTERFACE --coverage)
endif()
