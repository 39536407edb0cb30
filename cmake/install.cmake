# What `cmake --install` puts where. Programs go to games/ and manual pages to section 6, as the distribution does it;
# interfaces find the engines by the plugin files below share/games/plugins.
include(GNUInstallDirs)
set(QUELMAR_INSTALL_GAMESDIR games CACHE STRING "Directory of the programs, below the installation prefix")

install(TARGETS quelmar tbmake RUNTIME DESTINATION ${QUELMAR_INSTALL_GAMESDIR})
install(FILES packaging/quelmar.eng DESTINATION ${CMAKE_INSTALL_DATADIR}/games/plugins/xboard)
set(QUELMAR_MANUAL_PAGES quelmar tbmake)
if(TARGET quelmar-uci)
    install(TARGETS quelmar-uci RUNTIME DESTINATION ${QUELMAR_INSTALL_GAMESDIR})
    install(FILES packaging/quelmar-uci.eng DESTINATION ${CMAKE_INSTALL_DATADIR}/games/plugins/uci)
    list(APPEND QUELMAR_MANUAL_PAGES quelmar-uci)
endif()

install(FILES README.md CHANGELOG.md CONTRIBUTING.md DESTINATION ${CMAKE_INSTALL_DOCDIR})
install(DIRECTORY docs DESTINATION ${CMAKE_INSTALL_DOCDIR} FILES_MATCHING PATTERN "*.md")
install(FILES packaging/quelmar.ini DESTINATION ${CMAKE_INSTALL_DOCDIR}/examples)

# Pages are installed compressed where gzip is there; -n leaves the time out, so that equal builds make equal files.
find_program(QUELMAR_GZIP gzip)
foreach(page ${QUELMAR_MANUAL_PAGES})
    set(source ${PROJECT_SOURCE_DIR}/man/${page}.6)
    if(QUELMAR_GZIP)
        set(packed ${PROJECT_BINARY_DIR}/man/${page}.6.gz)
        add_custom_command(OUTPUT ${packed}
            COMMAND ${CMAKE_COMMAND} -E make_directory ${PROJECT_BINARY_DIR}/man
            COMMAND ${QUELMAR_GZIP} -9nc ${source} > ${packed}
            DEPENDS ${source} VERBATIM)
        list(APPEND QUELMAR_PAGE_FILES ${packed})
    else()
        list(APPEND QUELMAR_PAGE_FILES ${source})
    endif()
endforeach()
add_custom_target(manual ALL DEPENDS ${QUELMAR_PAGE_FILES})
install(FILES ${QUELMAR_PAGE_FILES} DESTINATION ${CMAKE_INSTALL_MANDIR}/man6)
