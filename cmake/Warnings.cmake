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
    -Wduplicated-branches
    -Wduplicated-cond
    -Wextra-semi
    -Wformat=2
    -Wimplicit-fallthrough
    -Wlogical-op
    -Wnon-virtual-dtor
    -Wnull-dereference
    -Wold-style-cast
    -Woverloaded-virtual
    -Wredundant-decls
    -Wshadow
    -Wsign-conversion
    -Wundef
    -Wunused
    -Wuseless-cast
    -Wzero-as-null-pointer-constant)
list(TRANSFORM flags REPLACE "(.+)" "$<$<COMPILE_LANGUAGE:CXX>:\\1>")
target_compile_options(morvane_warnings INTERFACE ${flags})
