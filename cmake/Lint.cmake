# The target lint compiles every source of ours with the warnings as errors and has clang-tidy examine
# it. What was found clean is not examined again until it or something it includes changes.

set(CMAKE_CXX_CLANG_TIDY "clang-tidy-$ENV{LLVM}" --quiet)
# So that another configuration examines everything again.
file(GLOB configurations "${PROJECT_SOURCE_DIR}/.clang-tidy" "${PROJECT_SOURCE_DIR}/*/.clang-tidy")
set_property(DIRECTORY APPEND PROPERTY CMAKE_CONFIGURE_DEPENDS ${configurations})
foreach(configuration IN LISTS configurations)
    file(MD5 "${configuration}" digest)
    string(APPEND digests ${digest})
endforeach()
add_compile_definitions(MORVANE_LINT=${digests})

# To be called when all targets exist.
function(morvane_add_lint)
    foreach(folder src tests bench)
        get_property(targets DIRECTORY ${folder} PROPERTY BUILDSYSTEM_TARGETS)
        foreach(target IN LISTS targets)
            get_target_property(type ${target} TYPE)
            if(type MATCHES "EXECUTABLE|STATIC_LIBRARY|OBJECT_LIBRARY")
                list(APPEND objects $<TARGET_OBJECTS:${target}>)
            endif()
        endforeach()
    endforeach()
    add_custom_target(lint DEPENDS ${objects})
endfunction()
