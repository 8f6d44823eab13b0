# Compile and link options as interface libraries; each target links those that apply to it.

# For all our code, product and tests.
add_library(morvane_options INTERFACE)
target_compile_options(
    morvane_options INTERFACE
    # No path of the build machine in the program: every checkout gives the same bytes.
    "-ffile-prefix-map=${PROJECT_SOURCE_DIR}=."
    -ffunction-sections -fdata-sections)
# The product's objects need a stack guard in the tests too; there the runtime's is linked.
target_link_options(
    morvane_options INTERFACE -static -fstack-protector-strong -s -Wl,--gc-sections)

# The product reports failures by value and needs no run-time types: without both mechanisms the
# program stays small.
add_library(morvane_lean INTERFACE)
target_compile_options(
    morvane_lean INTERFACE
    $<$<COMPILE_LANGUAGE:CXX>:-fno-rtti>
    $<$<COMPILE_LANGUAGE:CXX>:-fno-exceptions>)

# A buffer overrun ends the program; see src/runtime/stack_guard.cpp.
add_library(morvane_guarded INTERFACE)
target_compile_options(
    morvane_guarded INTERFACE $<$<COMPILE_LANGUAGE:CXX>:-fstack-protector-strong>)
# Checked calls need the optimiser, which coverage turns off.
target_compile_definitions(
    morvane_guarded INTERFACE
    $<$<AND:$<COMPILE_LANGUAGE:CXX>,$<NOT:$<BOOL:${MORVANE_COVERAGE}>>>:_FORTIFY_SOURCE=2>)

# Records which lines of the product are run.
add_library(morvane_counted INTERFACE)
if(MORVANE_COVERAGE)
    target_compile_options(
        morvane_counted INTERFACE
        $<$<COMPILE_LANGUAGE:CXX>:-O0>
        $<$<COMPILE_LANGUAGE:CXX>:--coverage>)
    target_link_options(morvane_options INTERFACE --coverage)
endif()

# For wWinMain programs, along with WIN32: relocatable, and byte-identical in every build.
add_library(morvane_windowed INTERFACE)
# -municode for the linker alone, which picks the wWinMain entry point by it; base/win.h defines
# UNICODE.
target_link_options(
    morvane_windowed INTERFACE
    -municode -Wl,--dynamicbase,--high-entropy-va,--nxcompat,--tsaware,--no-insert-timestamp)
