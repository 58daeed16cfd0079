# Warnings that every target of this project is built with; each of them is an error.
add_library(tavi_warnings INTERFACE)
target_compile_options(tavi_warnings INTERFACE -Wall -Wextra -Wpedantic -Wconversion -Wshadow -Werror
                       $<$<COMPILE_LANGUAGE:CXX>:-Wnon-virtual-dtor -Woverloaded-virtual>)
