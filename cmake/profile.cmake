# Profile-guided building, in two steps in one build directory; tools/build_profiled does both.
#   QUELMAR_PROFILE=generate   a program that counts its branches and writes the counts on exit
#   QUELMAR_PROFILE=use        the final program, laid out by these counts
set(QUELMAR_PROFILE "" CACHE STRING "Step of a profile-guided build: generate, use, or empty for none")
set_property(CACHE QUELMAR_PROFILE PROPERTY STRINGS "" generate use)
set(QUELMAR_PROFILE_DIR ${PROJECT_BINARY_DIR}/profile)

if(QUELMAR_PROFILE STREQUAL "generate")
    add_compile_options(-fprofile-generate=${QUELMAR_PROFILE_DIR})
    add_link_options(-fprofile-generate=${QUELMAR_PROFILE_DIR})
elseif(QUELMAR_PROFILE STREQUAL "use")
    if(CMAKE_CXX_COMPILER_ID STREQUAL "Clang")
        # Code that was not run in training is left as it is; that is no fault.
        add_compile_options(-fprofile-use=${QUELMAR_PROFILE_DIR}/merged.profdata -Wno-profile-instr-unprofiled)
        add_link_options(-fprofile-use=${QUELMAR_PROFILE_DIR}/merged.profdata)
    else()
        add_compile_options(-fprofile-use=${QUELMAR_PROFILE_DIR} -fprofile-partial-training -Wno-missing-profile)
        add_link_options(-fprofile-use=${QUELMAR_PROFILE_DIR})
    endif()
elseif(QUELMAR_PROFILE)
    message(FATAL_ERROR "QUELMAR_PROFILE is generate, use or empty, not '${QUELMAR_PROFILE}'")
endif()
