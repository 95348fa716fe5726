# What is installed, and where. The folder of libraries is chosen when installing: Debian's multiarch folder below /usr,
# and lib elsewhere. So the pkg-config file and the CMake package are made then, or find their way from where they are.
include(GNUInstallDirs)
include(CMakePackageConfigHelpers)
install(CODE "
    set(QVR_LIBDIR lib)
    if(\"\${CMAKE_INSTALL_PREFIX}\" STREQUAL \"/usr\" AND EXISTS /etc/debian_version)
        set(QVR_LIBDIR lib/x86_64-linux-gnu)
    endif()" ALL_COMPONENTS)
set(libdir "\${QVR_LIBDIR}")
install(TARGETS morvenqvr LIBRARY DESTINATION "${libdir}" COMPONENT runtime NAMELINK_COMPONENT development)
install(FILES include/morvenqvr.h include/morvenqvr.hpp DESTINATION ${CMAKE_INSTALL_INCLUDEDIR} COMPONENT development)
install(DIRECTORY include/morvenqvr DESTINATION ${CMAKE_INSTALL_INCLUDEDIR} COMPONENT development)
write_basic_package_version_file(${PROJECT_BINARY_DIR}/morvenqvrConfigVersion.cmake COMPATIBILITY SameMajorVersion)
install(FILES cmake/morvenqvrConfig.cmake ${PROJECT_BINARY_DIR}/morvenqvrConfigVersion.cmake
    DESTINATION "${libdir}/cmake/morvenqvr" COMPONENT development)
configure_file(cmake/morvenqvr.pc.in ${PROJECT_BINARY_DIR}/morvenqvr.pc.in @ONLY)
install(CODE "
    file(READ \"${PROJECT_BINARY_DIR}/morvenqvr.pc.in\" text)
    string(REPLACE \"%PREFIX%\" \"\${CMAKE_INSTALL_PREFIX}\" text \"\${text}\")
    string(REPLACE \"%LIBDIR%\" \"\${QVR_LIBDIR}\" text \"\${text}\")
    file(WRITE \"${PROJECT_BINARY_DIR}/morvenqvr.pc\" \"\${text}\")" COMPONENT development)
install(FILES ${PROJECT_BINARY_DIR}/morvenqvr.pc DESTINATION "${libdir}/pkgconfig" COMPONENT development)

# The pages, once `make docs` has made them, and the examples: for the documentation package alone.
set(pages ${CMAKE_INSTALL_DATADIR}/doc/libmorvenqvr-doc)
install(DIRECTORY build/docs/html DESTINATION ${pages} COMPONENT documentation EXCLUDE_FROM_ALL OPTIONAL)
install(DIRECTORY build/docs/man/man3 DESTINATION ${CMAKE_INSTALL_MANDIR} COMPONENT documentation EXCLUDE_FROM_ALL OPTIONAL)
install(DIRECTORY examples DESTINATION ${pages} COMPONENT documentation EXCLUDE_FROM_ALL)
