# For ./dev lint, which names the version in LLVM: a second compiler, and the same headers and
# libraries.
include("${CMAKE_CURRENT_LIST_DIR}/mingw-w64-x86_64.cmake")

foreach(language C CXX)
    set(CMAKE_${language}_COMPILER_TARGET x86_64-w64-mingw32)
endforeach()
set(CMAKE_C_COMPILER clang-$ENV{LLVM})
set(CMAKE_CXX_COMPILER clang++-$ENV{LLVM})
# The test of the compiler links nothing either.
set(CMAKE_TRY_COMPILE_TARGET_TYPE STATIC_LIBRARY)
