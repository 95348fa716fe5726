# The shared object, the archive of the same objects that tests link to reach hidden symbols, and installation.
find_library(QVR_OMP_LIBRARY NAMES omp libomp.so.5 REQUIRED)

set(QVR_OBJECTS $<TARGET_OBJECTS:slot_plain>)
foreach(slot IN LISTS QVR_SLOTS)
    list(APPEND QVR_OBJECTS $<TARGET_OBJECTS:slot_${slot}>)
endforeach()

add_library(morvenqvr SHARED ${QVR_OBJECTS})
set_target_properties(morvenqvr PROPERTIES
    VERSION ${PROJECT_VERSION} SOVERSION ${PROJECT_VERSION_MAJOR}
    LIBRARY_OUTPUT_DIRECTORY ${PROJECT_BINARY_DIR}
    LINKER_LANGUAGE CXX
    SKIP_BUILD_RPATH ON
    LINK_DEPENDS ${PROJECT_SOURCE_DIR}/cmake/exports.map)
target_include_directories(morvenqvr PUBLIC
    $<BUILD_INTERFACE:${PROJECT_SOURCE_DIR}/include> $<INSTALL_INTERFACE:include>)
target_link_options(morvenqvr PRIVATE
    -Wl,--version-script=${PROJECT_SOURCE_DIR}/cmake/exports.map
    -Wl,-z,relro,-z,now,-z,noexecstack,-z,shstk -Wl,--as-needed -Wl,-O2)
if(NOT QVR_SANITIZE)
    target_link_options(morvenqvr PRIVATE -nostdlib++ -Wl,-z,defs)
endif()
target_link_libraries(morvenqvr PRIVATE ${QVR_OMP_LIBRARY} m)

# A bit for each slot that is built without the sanitizer, for tests.
set(left_out 0)
foreach(slot IN LISTS QVR_LEFT_OUT)
    list(FIND QVR_SLOTS ${slot} index)
    math(EXPR left_out "${left_out} | 1 << ${index}")
endforeach()
add_library(morvenqvr_static STATIC EXCLUDE_FROM_ALL ${QVR_OBJECTS})
set_target_properties(morvenqvr_static PROPERTIES LINKER_LANGUAGE CXX)
target_compile_definitions(morvenqvr_static PUBLIC QVR_LEFT_OUT=${left_out})
target_link_libraries(morvenqvr_static PUBLIC declarations ${QVR_OMP_LIBRARY} m)

include(GNUInstallDirs)
include(CMakePackageConfigHelpers)
install(TARGETS morvenqvr EXPORT morvenqvrTargets LIBRARY DESTINATION ${CMAKE_INSTALL_LIBDIR}
    COMPONENT runtime NAMELINK_COMPONENT development)
install(FILES include/morvenqvr.h include/morvenqvr.hpp DESTINATION ${CMAKE_INSTALL_INCLUDEDIR} COMPONENT development)
install(DIRECTORY include/morvenqvr DESTINATION ${CMAKE_INSTALL_INCLUDEDIR} COMPONENT development)
install(EXPORT morvenqvrTargets NAMESPACE morvenqvr:: DESTINATION ${CMAKE_INSTALL_LIBDIR}/cmake/morvenqvr
    COMPONENT development)
configure_package_config_file(cmake/morvenqvrConfig.cmake.in ${PROJECT_BINARY_DIR}/morvenqvrConfig.cmake
    INSTALL_DESTINATION ${CMAKE_INSTALL_LIBDIR}/cmake/morvenqvr)
write_basic_package_version_file(${PROJECT_BINARY_DIR}/morvenqvrConfigVersion.cmake COMPATIBILITY SameMajorVersion)
install(FILES ${PROJECT_BINARY_DIR}/morvenqvrConfig.cmake ${PROJECT_BINARY_DIR}/morvenqvrConfigVersion.cmake
    DESTINATION ${CMAKE_INSTALL_LIBDIR}/cmake/morvenqvr COMPONENT development)
configure_file(cmake/morvenqvr.pc.in ${PROJECT_BINARY_DIR}/morvenqvr.pc.in @ONLY)
install(CODE "
    set(prefix \"\${CMAKE_INSTALL_PREFIX}\")
    file(READ \"${PROJECT_BINARY_DIR}/morvenqvr.pc.in\" text)
    string(REPLACE \"%PREFIX%\" \"\${prefix}\" text \"\${text}\")
    file(WRITE \"${PROJECT_BINARY_DIR}/morvenqvr.pc\" \"\${text}\")" COMPONENT development)
install(FILES ${PROJECT_BINARY_DIR}/morvenqvr.pc DESTINATION ${CMAKE_INSTALL_LIBDIR}/pkgconfig COMPONENT development)

# Debian packages: `cpack` in the build folder. What the runtime package depends on is read off the shared object.
set(CPACK_GENERATOR DEB)
set(CPACK_PACKAGE_NAME libmorvenqvr)
set(CPACK_PACKAGE_VENDOR morvenqvr)
set(CPACK_PACKAGE_CONTACT "The libmorvenqvr developers <morvenqvr@localhost>")
set(CPACK_PACKAGING_INSTALL_PREFIX /usr)
set(CPACK_STRIP_FILES ON)
set(CPACK_COMPONENTS_ALL runtime development)
if(QVR_PYTHON)
    list(APPEND CPACK_COMPONENTS_ALL python)
endif()
set(CPACK_DEB_COMPONENT_INSTALL ON)
set(CPACK_DEBIAN_FILE_NAME DEB-DEFAULT)
set(CPACK_DEBIAN_RUNTIME_PACKAGE_NAME libmorvenqvr${PROJECT_VERSION_MAJOR})
set(CPACK_DEBIAN_RUNTIME_PACKAGE_SECTION libs)
set(CPACK_DEBIAN_RUNTIME_PACKAGE_SHLIBDEPS ON)
set(CPACK_DEBIAN_RUNTIME_PACKAGE_GENERATE_SHLIBS ON)
set(CPACK_DEBIAN_DEVELOPMENT_PACKAGE_NAME libmorvenqvr-dev)
set(CPACK_DEBIAN_DEVELOPMENT_PACKAGE_SECTION libdevel)
set(CPACK_DEBIAN_DEVELOPMENT_PACKAGE_DEPENDS "libmorvenqvr${PROJECT_VERSION_MAJOR} (= ${PROJECT_VERSION})")
set(CPACK_COMPONENT_RUNTIME_DESCRIPTION "signal- and image-processing primitives, shared library
 Transforms, filters, vector arithmetic, elementary functions, statistics and image scaling for x86-64,
 at the speed of whatever processor they run on.")
set(CPACK_COMPONENT_DEVELOPMENT_DESCRIPTION "signal- and image-processing primitives, development files
 The header, the pkg-config file and the CMake package of libmorvenqvr.")
set(CPACK_DEBIAN_PYTHON_PACKAGE_NAME python3-morvenqvr)
set(CPACK_DEBIAN_PYTHON_PACKAGE_SECTION python)
set(CPACK_DEBIAN_PYTHON_PACKAGE_DEPENDS
    "libmorvenqvr${PROJECT_VERSION_MAJOR} (>= ${PROJECT_VERSION}), libc6, python3 (>= 3.11), python3 (<< 3.12), python3-numpy (>= 1:1.24)")
set(CPACK_COMPONENT_PYTHON_DESCRIPTION "signal- and image-processing primitives on numpy arrays
 The Python package morvenqvr: the functions of libmorvenqvr on numpy arrays, without copies, and objects for
 transforms, filters and resizing.")
include(CPack)
