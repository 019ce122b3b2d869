# The packages a user downloads, made by cpack from a built tree (scripts/release, and the package
# check of scripts/test):
#   Linux tree:    cpack -G DEB  morvaine_VERSION_amd64.deb, the program in /usr/games, the docs in
#                  /usr/share/doc/morvaine, the manual page in /usr/share/man/man6
#   Windows tree:  cpack -G ZIP  morvaine-VERSION-windows-x64.zip, morvaine.exe with README,
#                  LICENSE.txt, CHANGELOG.md and an example mo.ini beside it
# Their files are install components of their own, left out of a plain "cmake --install", which
# keeps its layout (bin/, share/doc/morvaine). The version is the one the engine prints.
file(STRINGS ${CMAKE_SOURCE_DIR}/driver/version.h version_line REGEX "VERSION *= *\"[0-9.]+\"")
string(REGEX MATCH "[0-9][0-9.]*" MORVAINE_VERSION "${version_line}")
if(NOT MORVAINE_VERSION)
    message(FATAL_ERROR "no version string found in driver/version.h")
endif()
# The manual page's date: that of the newest version in CHANGELOG.md.
file(STRINGS ${CMAKE_SOURCE_DIR}/CHANGELOG.md newest REGEX "^## [0-9.]+ \\([0-9-]+\\)$" LIMIT_COUNT 1)
string(REGEX MATCH "[0-9]+-[0-9]+-[0-9]+" MORVAINE_DATE "${newest}")
set_property(DIRECTORY APPEND PROPERTY CMAKE_CONFIGURE_DEPENDS driver/version.h CHANGELOG.md)
set(MORVAINE_MAINTAINER "Morvaine developers <morvaine@example.org>" CACHE STRING
    "the packages' maintainer, name and mail address")

set(CPACK_PACKAGE_NAME morvaine)
set(CPACK_PACKAGE_VERSION ${MORVAINE_VERSION})
set(CPACK_PACKAGE_VENDOR "The Morvaine developers")
set(CPACK_PACKAGE_CONTACT ${MORVAINE_MAINTAINER})
set(CPACK_PACKAGE_DESCRIPTION_SUMMARY "chess engine for XBoard, UCI and the console")
set(CPACK_STRIP_FILES ON)
# cpack builds nothing: scripts/check-package and scripts/release build the package's targets first.
set(CMAKE_SKIP_INSTALL_ALL_DEPENDENCY ON)
set(CPACK_OUTPUT_FILE_PREFIX ${CMAKE_BINARY_DIR}/package)
# Packages hold only their own component, whatever else the tree installs.
set(CPACK_INSTALL_CMAKE_PROJECTS "${CMAKE_BINARY_DIR};morvaine;package;/")
set(CPACK_SOURCE_GENERATOR "")

if(WIN32)
    set(CPACK_GENERATOR ZIP)
    set(CPACK_PACKAGE_FILE_NAME morvaine-${MORVAINE_VERSION}-windows-x64)
    set(CPACK_INCLUDE_TOPLEVEL_DIRECTORY ON)
    install(TARGETS morvaine RUNTIME DESTINATION . COMPONENT package EXCLUDE_FROM_ALL)
    install(FILES README.md CHANGELOG.md docs/mo.ini DESTINATION . COMPONENT package EXCLUDE_FROM_ALL)
    install(FILES LICENSE DESTINATION . RENAME LICENSE.txt COMPONENT package EXCLUDE_FROM_ALL)
else()
    set(CPACK_GENERATOR DEB)
    set(CPACK_PACKAGING_INSTALL_PREFIX /usr)
    set(CPACK_DEBIAN_FILE_NAME DEB-DEFAULT)
    set(CPACK_DEBIAN_PACKAGE_SECTION games)
    set(CPACK_DEBIAN_PACKAGE_PRIORITY optional)
    set(CPACK_DEBIAN_PACKAGE_SHLIBDEPS ON)
    # The synopsis is the summary above.
    set(CPACK_DEBIAN_PACKAGE_DESCRIPTION [=[Morvaine plays and analyses chess for a graphical interface such as xboard,
which starts it and talks to it in the XBoard protocol version 2 or in UCI. A
person can type the same commands at a terminal and gets prompts, a board
diagram and diagnostic commands.
.
It searches with up to 128 threads sharing one transposition table, ponders,
analyses and plays its first moves from a Polyglot opening book. Settings come
from the file mo.ini in its working directory.]=])
    set(CPACK_INSTALL_DEFAULT_DIRECTORY_PERMISSIONS
        OWNER_READ OWNER_WRITE OWNER_EXECUTE GROUP_READ GROUP_EXECUTE WORLD_READ WORLD_EXECUTE)

    # The manual page and the changelog go compressed, as Debian has them; the changelog in
    # Debian's own form, from CHANGELOG.md.
    set(pkg ${CMAKE_BINARY_DIR}/package-files)
    configure_file(docs/morvaine.6 ${pkg}/morvaine.6 @ONLY)
    add_custom_command(OUTPUT ${pkg}/morvaine.6.gz
        COMMAND gzip -9nf -k ${pkg}/morvaine.6
        DEPENDS ${pkg}/morvaine.6 VERBATIM)
    add_custom_command(OUTPUT ${pkg}/changelog.gz
        COMMAND sh ${CMAKE_SOURCE_DIR}/packaging/debian-changelog ${CMAKE_SOURCE_DIR}/CHANGELOG.md
                ${MORVAINE_MAINTAINER} ${pkg}/changelog
        COMMAND gzip -9nf ${pkg}/changelog
        DEPENDS CHANGELOG.md packaging/debian-changelog VERBATIM)
    # Built on demand (scripts/check-package, scripts/release), so that a slip in CHANGELOG.md stops
    # the packaging only, never the build.
    add_custom_target(package_files DEPENDS ${pkg}/morvaine.6.gz ${pkg}/changelog.gz)

    set(doc share/doc/morvaine)
    install(TARGETS morvaine RUNTIME DESTINATION games COMPONENT package EXCLUDE_FROM_ALL)
    install(FILES README.md docs/mo.ini packaging/copyright ${pkg}/changelog.gz DESTINATION ${doc}
            COMPONENT package EXCLUDE_FROM_ALL)
    install(FILES ${pkg}/morvaine.6.gz DESTINATION share/man/man6 COMPONENT package EXCLUDE_FROM_ALL)
    # A plain install gets the manual page too, beside the program's own prefix.
    install(FILES ${pkg}/morvaine.6 DESTINATION ${CMAKE_INSTALL_MANDIR}/man6)
endif()
include(CPack)
