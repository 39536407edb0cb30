# `cpack -G DEB`, `cpack -G TGZ` in a build directory, and the target package_source for the sources.
set(CPACK_PACKAGE_NAME quelmar)
set(CPACK_PACKAGE_VERSION 1.0beta7)
set(CPACK_PACKAGE_VENDOR "Edrin Talvose")
set(CPACK_PACKAGE_CONTACT "Edrin Talvose")
set(CPACK_PACKAGE_DESCRIPTION_SUMMARY "chess engine for xboard and UCI interfaces")
set(CPACK_PACKAGE_DESCRIPTION
    "Plays chess and Chess960 and analyses positions for a graphical interface or a
chess server. It speaks the xboard protocol and UCI, has no interface of its own
and no opening book, and reads Nalimov endgame tables, which tbmake can make.")
set(CPACK_STRIP_FILES ON)
set(CPACK_VERBATIM_VARIABLES ON)

# A beta sorts before its release only with the tilde.
set(CPACK_DEBIAN_PACKAGE_VERSION 1.0~beta7)
set(CPACK_DEBIAN_FILE_NAME DEB-DEFAULT)
set(CPACK_DEBIAN_PACKAGE_SECTION games)
set(CPACK_DEBIAN_PACKAGE_PRIORITY optional)
set(CPACK_DEBIAN_PACKAGE_SUGGESTS "xboard, polyglot")
find_program(QUELMAR_SHLIBDEPS dpkg-shlibdeps)
if(QUELMAR_SHLIBDEPS)
    set(CPACK_DEBIAN_PACKAGE_SHLIBDEPS ON)
else()
    set(CPACK_DEBIAN_PACKAGE_DEPENDS "libc6, libstdc++6, libgcc-s1")
endif()

set(CPACK_SOURCE_GENERATOR TGZ)
set(CPACK_SOURCE_PACKAGE_FILE_NAME quelmar-1.0beta7-source)
set(CPACK_SOURCE_IGNORE_FILES "/[.]git/;/[.]git$;/build/;/out/;[.]swp$;~$;/__pycache__/")
include(CPack)
