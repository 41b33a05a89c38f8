# `cpack` in a build folder makes a Debian package with the dependencies that its libraries have. scripts/package builds
# it the way the system wants it: the program and its modules lie in a folder of their own, and a link in /usr/bin leads
# there.
set(CPACK_GENERATOR DEB)
set(CPACK_PACKAGE_NAME vrx)
set(CPACK_PACKAGE_VENDOR vrx)
set(CPACK_PACKAGE_CONTACT "vrx <vrx@localhost>")
set(CPACK_PACKAGE_DESCRIPTION_SUMMARY "${PROJECT_DESCRIPTION}")
set(CPACK_PACKAGE_DESCRIPTION
"A library and a command line program that turn clips, sound and overlays into
a finished movie: captions, GPS speed meters, graphs and tracks, statistics of
a tennis match. It also reads and edits the tags of photographs and finds out
which files of a camera belong together.")
set(CPACK_PACKAGING_INSTALL_PREFIX /usr)
set(CPACK_STRIP_FILES ON)
set(CPACK_DEBIAN_FILE_NAME DEB-DEFAULT)
set(CPACK_DEBIAN_PACKAGE_SECTION video)
set(CPACK_DEBIAN_PACKAGE_SHLIBDEPS ON)
# The program finds its library beside it or in the folder of this very package.
set(CPACK_DEBIAN_PACKAGE_SHLIBDEPS_PRIVATE_DIRS ${CMAKE_LIBRARY_OUTPUT_DIRECTORY})
# Fonts are looked up by name when a caption is drawn, so no library depends on them.
set(CPACK_DEBIAN_PACKAGE_DEPENDS "fonts-dejavu-core")
set(CPACK_DEBIAN_PACKAGE_RECOMMENDS "fonts-noto-core, fonts-noto-color-emoji")
set(CPACK_DEBIAN_PACKAGE_SUGGESTS "fonts-noto-cjk, ffmpeg")

if(NOT CMAKE_INSTALL_BINDIR STREQUAL "bin")
  install(CODE "
    set(folder \"\$ENV{DESTDIR}\${CMAKE_INSTALL_PREFIX}/bin\")
    file(MAKE_DIRECTORY \"\${folder}\")
    file(CREATE_LINK ../${CMAKE_INSTALL_BINDIR}/vrx \"\${folder}/vrx\" SYMBOLIC)")
endif()
include(CPack)
