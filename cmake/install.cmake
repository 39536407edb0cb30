# What `cmake --install` puts where. Programs go to games/ and manual pages to section 6, as the distribution does it;
# interfaces find the engines by the plugin files below share/games/plugins.
include(GNUInstallDirs)
set(QUELMAR_INSTALL_GAMESDIR games CACHE STRING "Directory of the programs, below the installation prefix")

install(TARGETS quelmar quelmar-uci tbmake RUNTIME DESTINATION ${QUELMAR_INSTALL_GAMESDIR})
install(FILES packaging/quelmar.eng DESTINATION ${CMAKE_INSTALL_DATADIR}/games/plugins/xboard)
install(FILES packaging/quelmar-uci.eng DESTINATION ${CMAKE_INSTALL_DATADIR}/games/plugins/uci)

install(FILES README.md CONTRIBUTING.md packaging/copyright DESTINATION ${CMAKE_INSTALL_DOCDIR})
install(DIRECTORY docs DESTINATION ${CMAKE_INSTALL_DOCDIR} FILES_MATCHING PATTERN "*.md")
install(FILES packaging/quelmar.ini DESTINATION ${CMAKE_INSTALL_DOCDIR}/examples)

# Pages and changes are installed compressed where gzip is there; -n leaves the time out, so that equal builds make
# equal files.
find_program(QUELMAR_GZIP gzip)
set(QUELMAR_PACKED_FILES)
function(install_packed source name folder)
    if(QUELMAR_GZIP)
        set(packed ${PROJECT_BINARY_DIR}/packed/${name}.gz)
        add_custom_command(OUTPUT ${packed}
            COMMAND ${CMAKE_COMMAND} -E make_directory ${PROJECT_BINARY_DIR}/packed
            COMMAND ${QUELMAR_GZIP} -9nc ${source} > ${packed}
            DEPENDS ${source} VERBATIM)
        set(QUELMAR_PACKED_FILES ${QUELMAR_PACKED_FILES} ${packed} PARENT_SCOPE)
        install(FILES ${packed} DESTINATION ${folder})
    else()
        install(FILES ${source} DESTINATION ${folder} RENAME ${name})
    endif()
endfunction()

# The pages of the sources can be read as they are; the installed ones say of which version they are in the footer.
foreach(page quelmar quelmar-uci tbmake)
    set_property(DIRECTORY APPEND PROPERTY CMAKE_CONFIGURE_DEPENDS man/${page}.6)
    file(READ man/${page}.6 text)
    string(REPLACE "\n.Os\n" "\n.Os \"Quelmar @QUELMAR_VERSION@\"\n" text "${text}")
    file(CONFIGURE OUTPUT man/${page}.6 CONTENT "${text}" @ONLY)
    install_packed(${PROJECT_BINARY_DIR}/man/${page}.6 ${page}.6 ${CMAKE_INSTALL_MANDIR}/man6)
endforeach()
install_packed(${PROJECT_SOURCE_DIR}/CHANGELOG.md changelog ${CMAKE_INSTALL_DOCDIR})
add_custom_target(packed_files ALL DEPENDS ${QUELMAR_PACKED_FILES})

# Takes away what an installation of this build put below CMAKE_INSTALL_PREFIX.
add_custom_target(uninstall
    COMMAND ${CMAKE_COMMAND} -DBUILD=${PROJECT_BINARY_DIR} -P ${PROJECT_SOURCE_DIR}/cmake/uninstall.cmake
    USES_TERMINAL VERBATIM)
