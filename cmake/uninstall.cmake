# Removes what `cmake --install BUILD` puts into its prefix.
#
#   cmake -DBUILD=build/release [-DPREFIX=FOLDER] -P cmake/uninstall.cmake
#
# The manifest that an installation leaves in the build directory is overwritten by every later one, those of the tests
# and of cpack included; so this installs once more, to a folder of its own, and removes whatever appears there. Folders
# are left alone but those named after the program. DESTDIR works as in the installation.
get_filename_component(build "${BUILD}" ABSOLUTE)
set(scratch ${build}/uninstall)
set(prefix_option)
if(PREFIX)
    get_filename_component(prefix "${PREFIX}" ABSOLUTE)
    set(prefix_option --prefix ${prefix})
endif()

file(REMOVE_RECURSE ${scratch})
execute_process(
    COMMAND ${CMAKE_COMMAND} -E env DESTDIR=${scratch} ${CMAKE_COMMAND} --install ${build} ${prefix_option}
    OUTPUT_QUIET COMMAND_ERROR_IS_FATAL ANY)
file(GLOB_RECURSE installed LIST_DIRECTORIES true RELATIVE ${scratch} ${scratch}/*)
file(REMOVE_RECURSE ${scratch})

# Backwards a folder comes after what is in it.
list(SORT installed ORDER DESCENDING)
foreach(name ${installed})
    set(path "$ENV{DESTDIR}/${name}")
    if(EXISTS ${path} AND NOT IS_DIRECTORY ${path} OR IS_SYMLINK ${path})
        message("-- Removing: ${path}")
        file(REMOVE ${path})
    elseif(IS_DIRECTORY ${path} AND name MATCHES "/quelmar(/|$)")
        file(GLOB left ${path}/*)
        if(NOT left)
            file(REMOVE_RECURSE ${path})
        endif()
    endif()
endforeach()
