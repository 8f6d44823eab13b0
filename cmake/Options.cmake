# Compile and link options as interface libraries; a target links the ones that apply to it.

# Every file of ours, product and tests.
add_library(morvane_options INTERFACE)
if(MSVC)
    target_compile_options(morvane_options INTERFACE /utf-8 /permissive-)
else()
    # No directory of the building machine in the program, and the same bytes from every checkout.
    target_compile_options(morvane_options INTERFACE "-ffile-prefix-map=${PROJECT_SOURCE_DIR}=.")
    target_compile_options(
        morvane_options INTERFACE
        $<$<CONFIG:Debug>:-O0>
        $<$<NOT:$<CONFIG:Debug>>:-ffunction-sections>
        $<$<NOT:$<CONFIG:Debug>>:-fdata-sections>)
    target_compile_definitions(morvane_options INTERFACE $<$<CONFIG:Debug>:_GLIBCXX_ASSERTIONS>)
    # The tests have no stack guard of their own and take the runtime's, for the product's objects.
    target_link_options(morvane_options INTERFACE -static -fstack-protector-strong)
    target_link_options(morvane_options INTERFACE
                        $<$<NOT:$<CONFIG:Debug>>:-s> $<$<NOT:$<CONFIG:Debug>>:-Wl,--gc-sections>)
endif()

# The product reports failures by value and never asks for a type at run time: leaving both
# mechanisms out keeps the program small.
add_library(morvane_lean INTERFACE)
if(MSVC)
    target_compile_options(morvane_lean INTERFACE /GR- /EHs-c-)
    target_compile_definitions(morvane_lean INTERFACE _HAS_EXCEPTIONS=0)
else()
    target_compile_options(
        morvane_lean INTERFACE
        $<$<COMPILE_LANGUAGE:CXX>:-fno-rtti>
        $<$<COMPILE_LANGUAGE:CXX>:-fno-exceptions>)
endif()

# A buffer that is overrun ends the program; see app/stack_guard.cpp.
add_library(morvane_guarded INTERFACE)
if(MSVC)
    target_compile_options(morvane_guarded INTERFACE /GS)
else()
    target_compile_options(
        morvane_guarded INTERFACE $<$<COMPILE_LANGUAGE:CXX>:-fstack-protector-strong>)
    # Checked calls need the optimiser.
    target_compile_definitions(
        morvane_guarded INTERFACE
        $<$<AND:$<COMPILE_LANGUAGE:CXX>,$<NOT:$<CONFIG:Debug>>,$<NOT:$<BOOL:${MORVANE_COVERAGE}>>>:_FORTIFY_SOURCE=2>)
endif()

# Counts which lines of the product are run; see tests/coverage.
add_library(morvane_counted INTERFACE)
if(MORVANE_COVERAGE)
    target_compile_options(
        morvane_counted INTERFACE
        $<$<COMPILE_LANGUAGE:CXX>:-O0>
        $<$<COMPILE_LANGUAGE:CXX>:--coverage>)
    target_link_options(morvane_options INTERFACE --coverage)
endif()

# A windowed program with wWinMain, loadable anywhere in memory, with the same bytes at every build.
add_library(morvane_windowed INTERFACE)
if(MSVC)
    target_link_options(morvane_windowed INTERFACE /SUBSYSTEM:WINDOWS /DYNAMICBASE /HIGHENTROPYVA
                        /NXCOMPAT /TSAWARE /Brepro)
else()
    # -municode only here: for the compiler it would define UNICODE a second time.
    target_link_options(
        morvane_windowed INTERFACE
        -municode -mwindows
        -Wl,--dynamicbase,--high-entropy-va,--nxcompat,--tsaware,--no-insert-timestamp)
endif()
