# What `cmake --install` puts where. Programs go to games/ and manual pages to section 6, as the distribution does it;
# interfaces find the engines by the plugin files below share/games/plugins.
include(GNUInstallDirs)
set(QUELMAR_INSTALL_GAMESDIR games CACHE STRING "Directory of the programs, below the installation prefix")

install(TARGETS quelmar quelmar-uci tbmake RUNTIME DESTINATION ${QUELMAR_INSTALL_GAMESDIR})
install(FILES packaging/quelmar.eng DESTINATION ${CMAKE_INSTALL_DATADIR}/games/plugins/xboard)
install(FILES packaging/quelmar-uci.eng DESTINATION ${CMAKE_INSTALL_DATADIR}/games/plugins/uci)

install(FILES README.md CONTRIBUTING.md DESTINATION ${CMAKE_INSTALL_DOCDIR})
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
            COMMAND ${QUELMAR_GZIP} -9nc ${PROJECT_SOURCE_DIR}/${source} > ${packed}
            DEPENDS ${source} VERBATIM)
        set(QUELMAR_PACKED_FILES ${QUELMAR_PACKED_FILES} ${packed} PARENT_SCOPE)
        install(FILES ${packed} DESTINATION ${folder})
    else()
        install(FILES ${source} DESTINATION ${folder} RENAME ${name})
    endif()
endfunction()

foreach(page quelmar quelmar-uci tbmake)
    install_packed(man/${page}.6 ${page}.6 ${CMAKE_INSTALL_MANDIR}/man6)
endforeach()
install_packed(CHANGELOG.md changelog ${CMAKE_INSTALL_DOCDIR})
add_custom_target(packed_files ALL DEPENDS ${QUELMAR_PACKED_FILES})
