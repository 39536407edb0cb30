# `cpack -G DEB`, `cpack -G TGZ` in a build directory, and the target package_source for the sources.
string(REPLACE " " "" CPACK_PACKAGE_VERSION "${QUELMAR_VERSION}")
set(CPACK_PACKAGE_NAME quelmar)
set(CPACK_PACKAGE_VENDOR "Edrin Talvose")
set(CPACK_PACKAGE_CONTACT "Quelmar maintainers <maintainers@quelmar.example>")
set(CPACK_PACKAGE_DESCRIPTION_SUMMARY "chess engine for xboard and UCI interfaces")
# Lines of a package's description stay below 80 characters, the blank before each included.
set(CPACK_PACKAGE_DESCRIPTION
    "Quelmar plays chess and Chess960 and analyses positions for a graphical
interface or a chess server. It speaks the xboard protocol and UCI, has no
interface of its own and no opening book, and reads Nalimov endgame tables,
which tbmake can make.")
set(CPACK_STRIP_FILES ON)
set(CPACK_VERBATIM_VARIABLES ON)

# A beta sorts before its release only with the tilde.
string(REGEX REPLACE " ([a-z]+) " "~\\1" CPACK_DEBIAN_PACKAGE_VERSION "${QUELMAR_VERSION}")
set(CPACK_DEBIAN_PACKAGE_RELEASE 1)
set(CPACK_DEBIAN_FILE_NAME DEB-DEFAULT)
set(CPACK_DEBIAN_PACKAGE_SECTION games)
set(CPACK_DEBIAN_PACKAGE_PRIORITY optional)
set(CPACK_DEBIAN_PACKAGE_RECOMMENDS polyglot)
set(CPACK_DEBIAN_PACKAGE_SUGGESTS xboard)
find_program(QUELMAR_SHLIBDEPS dpkg-shlibdeps)
find_program(QUELMAR_DPKG_QUERY dpkg-query)
if(QUELMAR_SHLIBDEPS)
    set(CPACK_DEBIAN_PACKAGE_SHLIBDEPS ON)
elseif(QUELMAR_DPKG_QUERY)
    # Nobody here knows which versions are old enough; those of this machine are new enough.
    execute_process(COMMAND ${QUELMAR_DPKG_QUERY} -W -f "\${Package} (>= \${Version}), " libc6 libgcc-s1 libstdc++6
        OUTPUT_VARIABLE CPACK_DEBIAN_PACKAGE_DEPENDS)
    string(REGEX REPLACE ", $" "" CPACK_DEBIAN_PACKAGE_DEPENDS "${CPACK_DEBIAN_PACKAGE_DEPENDS}")
endif()

# A Debian package has a second list of changes, of the packaging.
configure_file(packaging/changelog.Debian.in debian/changelog.Debian @ONLY)
if(QUELMAR_GZIP)
    execute_process(COMMAND ${QUELMAR_GZIP} -9nf debian/changelog.Debian WORKING_DIRECTORY ${PROJECT_BINARY_DIR})
endif()
configure_file(packaging/debian.cmake.in debian.cmake @ONLY)
set(CPACK_PROJECT_CONFIG_FILE ${PROJECT_BINARY_DIR}/debian.cmake)

set(CPACK_SOURCE_GENERATOR TGZ)
set(CPACK_SOURCE_PACKAGE_FILE_NAME quelmar-${CPACK_PACKAGE_VERSION}-source)
set(CPACK_SOURCE_IGNORE_FILES "/[.]git/;/[.]git$;/build/;/out/;[.]swp$;~$;/__pycache__/")
include(CPack)
