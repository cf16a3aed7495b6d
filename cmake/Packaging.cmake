# CPack: `make package` writes a runtime .deb (the shared libraries), a -dev
# .deb (headers, link names, CMake and pkg-config files) and a .tar.gz of
# both (`make package` puts them in build/default/packages).
set(CPACK_PACKAGE_NAME splinecore)
set(CPACK_PACKAGE_VENDOR "the splinecore developers")
set(CPACK_PACKAGE_DESCRIPTION_SUMMARY "${PROJECT_DESCRIPTION}")
set(CPACK_PACKAGE_VERSION ${PROJECT_VERSION})
set(CPACK_PACKAGE_CONTACT "the splinecore developers")
set(CPACK_RESOURCE_FILE_LICENSE ${PROJECT_SOURCE_DIR}/LICENSE)
set(CPACK_PACKAGING_INSTALL_PREFIX /usr)
set(CPACK_GENERATOR DEB TGZ)
set(CPACK_COMPONENTS_ALL runtime dev)
set(CPACK_DEB_COMPONENT_INSTALL ON)
set(CPACK_ARCHIVE_COMPONENT_INSTALL OFF)
set(CPACK_DEBIAN_FILE_NAME DEB-DEFAULT)
set(CPACK_DEBIAN_PACKAGE_SECTION libs)
# The runtime package is named for its SONAME, as Debian's are.
set(CPACK_DEBIAN_RUNTIME_PACKAGE_NAME libsplinecore${PROJECT_VERSION_MAJOR}.${PROJECT_VERSION_MINOR})
set(CPACK_DEBIAN_DEV_PACKAGE_NAME libsplinecore-dev)
set(CPACK_DEBIAN_DEV_PACKAGE_DEPENDS "libsplinecore${PROJECT_VERSION_MAJOR}.${PROJECT_VERSION_MINOR} (= ${PROJECT_VERSION})")
set(CPACK_DEBIAN_DEV_PACKAGE_SECTION libdevel)
set(CPACK_DEBIAN_RUNTIME_PACKAGE_SHLIBDEPS OFF)
include(CPack)
