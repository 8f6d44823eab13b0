# Compile and link options as interface libraries; a target links the ones that apply to it.

# Every file of ours, product and tests.
add_library(morvane_options INTERFACE)
target_compile_options(
    morvane_options INTERFACE
    # No directory of the building machine in the program, and the same bytes from every checkout.
    "-ffile-prefix-map=${PROJECT_SOURCE_DIR}=."
    -ffunction-sections -fdata-sections)
# The tests have no stack guard of their own and take the runtime's, for the product's objects.
target_link_options(
    morvane_options INTERFACE -static -fstack-protector-strong -s -Wl,--gc-sections)

# The product reports failures by value and never asks for a type at run time: leaving both
# mechanisms out keeps the program small.
add_library(morvane_lean INTERFACE)
target_compile_options(
    morvane_lean INTERFACE
    $<$<COMPILE_LANGUAGE:CXX>:-fno-rtti>
    $<$<COMPILE_LANGUAGE:CXX>:-fno-exceptions>)

# A buffer that is overrun ends the program; see src/runtime/stack_guard.cpp.
add_library(morvane_guarded INTERFACE)
target_compile_options(
    morvane_guarded INTERFACE $<$<COMPILE_LANGUAGE:CXX>:-fstack-protector-strong>)
# Checked calls need the optimiser, which counting leaves out.
target_compile_definitions(
    morvane_guarded INTERFACE
    $<$<AND:$<COMPILE_LANGUAGE:CXX>,$<NOT:$<BOOL:${MORVANE_COVERAGE}>>>:_FORTIFY_SOURCE=2>)

# Counts which lines of the product are run; see tests/coverage.
add_library(morvane_counted INTERFACE)
if(MORVANE_COVERAGE)
    target_compile_options(
        morvane_counted INTERFACE
        $<$<COMPILE_LANGUAGE:CXX>:-O0>
        $<$<COMPILE_LANGUAGE:CXX>:--coverage>)
    target_link_options(morvane_options INTERFACE --coverage)
endif()

# Beside WIN32, for wWinMain: loadable anywhere in memory, with the same bytes at every build.
add_library(morvane_windowed INTERFACE)
# -municode only here: for the compiler it would define UNICODE a second time.
target_link_options(
    morvane_windowed INTERFACE
    -municode -Wl,--dynamicbase,--high-entropy-va,--nxcompat,--tsaware,--no-insert-timestamp)
