# Every source is compiled with the warnings as errors and examined by clang-tidy. What was found clean
# is not examined again until it or something it includes changes.

set(CMAKE_CXX_CLANG_TIDY "clang-tidy-$ENV{LLVM}" --quiet)
# Every source has to include what it uses.
set(CMAKE_DISABLE_PRECOMPILE_HEADERS ON)

# So that another configuration examines everything again.
file(GLOB configurations CONFIGURE_DEPENDS "${PROJECT_SOURCE_DIR}/.clang-tidy" "${PROJECT_SOURCE_DIR}/*/.clang-tidy")
set_property(DIRECTORY APPEND PROPERTY CMAKE_CONFIGURE_DEPENDS ${configurations})
foreach(configuration IN LISTS configurations)
    file(MD5 "${configuration}" digest)
    string(APPEND digests ${digest})
endforeach()
add_compile_definitions(MORVANE_LINT=${digests})

# Nothing is linked.
set(CMAKE_CXX_LINK_EXECUTABLE "\"${CMAKE_COMMAND}\" -E touch <TARGET>")
set(CMAKE_CXX_CREATE_SHARED_MODULE "${CMAKE_CXX_LINK_EXECUTABLE}")
