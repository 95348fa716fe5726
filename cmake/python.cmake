# The Python package, in the folder python/ of the build: target `python`, part of `all` where tests or the package need it.
option(QVR_PYTHON "Make the Debian package of the Python package" OFF)
if(QVR_SANITIZE)
    return()
endif()
# Debian's interpreter, since numpy and Cython are Debian's too.
find_program(QVR_PYTHON_EXECUTABLE NAMES python3 PATHS /usr/bin NO_DEFAULT_PATH)

set(python_sources ${PROJECT_SOURCE_DIR}/python)
file(GLOB python_files CONFIGURE_DEPENDS ${python_sources}/*.* ${python_sources}/bindings/*.* ${python_sources}/morvenqvr/*.*)
set(python_built ${PROJECT_BINARY_DIR}/python)
add_custom_command(OUTPUT ${PROJECT_BINARY_DIR}/python.stamp
    COMMAND ${CMAKE_COMMAND} -E rm -rf ${python_built}
    COMMAND ${CMAKE_COMMAND} -E env CC=${CMAKE_C_COMPILER} "CFLAGS=${CMAKE_C_FLAGS}" MORVENQVR_HEADER=${PROJECT_SOURCE_DIR}/include/morvenqvr.h
            MORVENQVR_LIBRARY=$<TARGET_FILE:morvenqvr> MORVENQVR_GENERATED=${PROJECT_BINARY_DIR}/python_work/made
            ${QVR_PYTHON_EXECUTABLE} -B -W ignore setup.py -q build --build-base ${PROJECT_BINARY_DIR}/python_work --build-lib ${python_built}
    COMMAND ${CMAKE_COMMAND} -E touch ${PROJECT_BINARY_DIR}/python.stamp
    WORKING_DIRECTORY ${python_sources}
    DEPENDS ${python_files} ${PROJECT_SOURCE_DIR}/include/morvenqvr.h morvenqvr
    COMMENT "Building the Python package"
    VERBATIM)
set(in_all "")
if(QVR_TESTS OR QVR_PYTHON)
    set(in_all ALL)
endif()
add_custom_target(python ${in_all} DEPENDS ${PROJECT_BINARY_DIR}/python.stamp)

# For the Debian package alone; there the package finds the installed library.
install(DIRECTORY ${python_built}/morvenqvr DESTINATION lib/python3/dist-packages COMPONENT python EXCLUDE_FROM_ALL
    PATTERN libmorvenqvr.so.1 EXCLUDE PATTERN __pycache__ EXCLUDE)
