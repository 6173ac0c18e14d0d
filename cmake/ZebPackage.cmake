# The Debian package of both programs: `cpack -G DEB` in the release build, configured with
# ZEB_DEVELOPMENT_RESOURCES=OFF so that the installed program does not use this source tree. libzeb has
# separate components and is not included.
set(CPACK_PACKAGE_NAME zebmaker)
set(CPACK_PACKAGE_CONTACT "ZEBMaker <zebmaker@localhost>")
set(CPACK_PACKAGE_DESCRIPTION_SUMMARY "converter and player of ZEB movies for the Sinclair QL")
set(CPACK_PACKAGE_DESCRIPTION
"Turns ordinary video files into ZEB movies for the Sinclair QL family and
the high-colour screens of SMSQ/E, and plays them.
.
The package contains the application, zebmaker, and the same engine on the
command line, zeb.")
set(CPACK_COMPONENTS_ALL Unspecified)
set(CPACK_COMPONENTS_GROUPING ALL_COMPONENTS_IN_ONE)
set(CPACK_DEB_COMPONENT_INSTALL ON)
set(CPACK_STRIP_FILES ON)
set(CPACK_PACKAGING_INSTALL_PREFIX /usr)
set(CPACK_DEBIAN_FILE_NAME DEB-DEFAULT)
set(CPACK_DEBIAN_PACKAGE_SECTION video)
set(CPACK_DEBIAN_PACKAGE_SHLIBDEPS ON)
# QML modules loaded at run time. No tool can detect them in the binaries.
set(run_time_modules
  qml6-module-qtqml qml6-module-qtqml-models qml6-module-qtqml-workerscript qml6-module-qtquick
  qml6-module-qtquick-controls qml6-module-qtquick-layouts qml6-module-qtquick-shapes qml6-module-qtquick-templates
  qml6-module-qtquick-window libqt6svg6 qt6-translations-l10n)
list(JOIN run_time_modules ", " CPACK_DEBIAN_PACKAGE_DEPENDS)
include(CPack)
