# All our code must compile without these warnings.
add_library(morvane_warnings INTERFACE)
set(flags
    -Wall
    -Wextra
    -Wpedantic
    -Werror
    -Wcast-align
    -Wcast-qual
    -Wconversion
    -Wdouble-promotion
    -Wextra-semi
    -Wformat=2
    -Wimplicit-fallthrough
    -Wnon-virtual-dtor
    -Wnull-dereference
    -Wold-style-cast
    -Woverloaded-virtual
    -Wshadow
    -Wsign-conversion
    -Wundef
    -Wunused
    -Wzero-as-null-pointer-constant)
if(CMAKE_CXX_COMPILER_ID STREQUAL "Clang")
    list(APPEND flags -Wnewline-eof -Wshadow-field -Wunreachable-code)
else()
    list(APPEND flags -Wduplicated-branches -Wduplicated-cond -Wlogical-op -Wredundant-decls
         -Wuseless-cast)
endif()
list(TRANSFORM flags REPLACE "(.+)" "$<$<COMPILE_LANGUAGE:CXX>:\\1>")
target_compile_options(morvane_warnings INTERFACE ${flags})
