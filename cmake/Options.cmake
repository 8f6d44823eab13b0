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
    target_link_options(morvane_options INTERFACE -static)
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
