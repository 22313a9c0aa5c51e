# The Debian package, by `cpack -G DEB` in the build directory. The programs' tree stands as one
# below /usr/lib/halvern, because the parent of bin is a system directory; what belongs to the
# system's own places is linked or moved there by PackageLinks.cmake.
set(CPACK_PACKAGE_NAME halvern)
set(CPACK_PACKAGE_VENDOR "The Halvern developers")
set(CPACK_PACKAGE_CONTACT "The Halvern developers <halvern@localhost>")
set(CPACK_PACKAGE_DESCRIPTION_SUMMARY ${PROJECT_DESCRIPTION})
set(CPACK_PACKAGING_INSTALL_PREFIX /usr/lib/halvern)
set(CPACK_PRE_BUILD_SCRIPTS ${PROJECT_SOURCE_DIR}/cmake/PackageLinks.cmake)
set(CPACK_STRIP_FILES ON)
set(CPACK_GENERATOR DEB)
set(CPACK_DEBIAN_FILE_NAME DEB-DEFAULT)
set(CPACK_DEBIAN_PACKAGE_SECTION science)
set(CPACK_DEBIAN_PACKAGE_SHLIBDEPS ON)
set(CPACK_DEBIAN_PACKAGE_SUGGESTS bash-completion)
set(CPACK_DEBIAN_PACKAGE_DESCRIPTION
"Reads SEG-Y, SEG-D, tape images and datasets of its own, runs flows of
processing items over them as jobs, and shows what the data hold. Each user
makes system directories of his own by 'halvern init DIR'.")
include(CPack)
