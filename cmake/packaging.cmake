# Debian packages: `cpack` in the build folder lays out a package for each component, and cmake/finish_packages.sh makes of
# these what Debian expects: dependencies, symbols, debug packages, documents, sizes, the same bytes from the same sources.
set(CPACK_GENERATOR DEB)
set(CPACK_PACKAGE_NAME libmorvenqvr)
set(CPACK_PACKAGE_VENDOR morvenqvr)
set(CPACK_PACKAGE_CONTACT "Morvenqvr developers <maintainers@morvenqvr.example>")
set(CPACK_PACKAGING_INSTALL_PREFIX /usr)
set(CPACK_STRIP_FILES OFF)
set(CPACK_COMPONENTS_ALL runtime development tools documentation)
if(QVR_PYTHON)
    list(APPEND CPACK_COMPONENTS_ALL python)
endif()
set(CPACK_DEB_COMPONENT_INSTALL ON)
set(CPACK_DEBIAN_FILE_NAME DEB-DEFAULT)
set(CPACK_DEBIAN_PACKAGE_SOURCE morvenqvr)
set(CPACK_DEBIAN_PACKAGE_RELEASE 1)
set(CPACK_POST_BUILD_SCRIPTS ${PROJECT_SOURCE_DIR}/cmake/finish_packages.cmake)
set(CPACK_QVR_FINISH ${PROJECT_SOURCE_DIR}/cmake/finish_packages.sh)
set(library libmorvenqvr${PROJECT_VERSION_MAJOR})
set(this "(= ${PROJECT_VERSION}-1)")

set(CPACK_DEBIAN_RUNTIME_PACKAGE_NAME ${library})
set(CPACK_DEBIAN_RUNTIME_PACKAGE_SECTION libs)
set(CPACK_DEBIAN_RUNTIME_PACKAGE_GENERATE_SHLIBS ON)
set(CPACK_COMPONENT_RUNTIME_DESCRIPTION "signal- and image-processing primitives, shared library
 Transforms, filters, vector arithmetic, elementary functions, statistics
 and image scaling for x86-64, at the speed of whatever processor they run on.")

set(CPACK_DEBIAN_DEVELOPMENT_PACKAGE_NAME libmorvenqvr-dev)
set(CPACK_DEBIAN_DEVELOPMENT_PACKAGE_SECTION libdevel)
set(CPACK_DEBIAN_DEVELOPMENT_PACKAGE_DEPENDS "${library} ${this}")
set(CPACK_DEBIAN_DEVELOPMENT_PACKAGE_SUGGESTS libmorvenqvr-doc)
set(CPACK_COMPONENT_DEVELOPMENT_DESCRIPTION "signal- and image-processing primitives, development files
 The C and C++ headers, the pkg-config file and the CMake package of
 libmorvenqvr.")

set(CPACK_DEBIAN_TOOLS_PACKAGE_NAME morvenqvr-tools)
set(CPACK_DEBIAN_TOOLS_PACKAGE_SECTION science)
set(CPACK_DEBIAN_TOOLS_PACKAGE_DEPENDS "${library} ${this}")
set(CPACK_COMPONENT_TOOLS_DESCRIPTION "signal- and image-processing primitives, tools
 Tells what libmorvenqvr finds on a machine, compares its functions with
 known answers, and runs programs with its code for older processors.")

set(CPACK_DEBIAN_DOCUMENTATION_PACKAGE_NAME libmorvenqvr-doc)
set(CPACK_DEBIAN_DOCUMENTATION_PACKAGE_SECTION doc)
set(CPACK_DEBIAN_DOCUMENTATION_PACKAGE_ARCHITECTURE all)
set(CPACK_COMPONENT_DOCUMENTATION_DESCRIPTION "signal- and image-processing primitives, documentation
 Reference pages, guides, measurements and example programs of
 libmorvenqvr.")

set(CPACK_DEBIAN_PYTHON_PACKAGE_NAME python3-morvenqvr)
set(CPACK_DEBIAN_PYTHON_PACKAGE_SECTION python)
set(CPACK_DEBIAN_PYTHON_PACKAGE_DEPENDS
    "${library} (>= ${PROJECT_VERSION}), libc6, python3 (>= 3.11), python3 (<< 3.12), python3-numpy (>= 1:1.24), python3-numpy-abi9")
set(CPACK_COMPONENT_PYTHON_DESCRIPTION "signal- and image-processing primitives on numpy arrays
 The Python package morvenqvr: the functions of libmorvenqvr on numpy arrays,
 without copies, and objects for transforms, filters and resizing.")
include(CPack)
