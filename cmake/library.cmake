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
# Kernels that come out the same for two slots are one body in the library. Functions whose address is taken stay apart.
# Not every linker can.
include(CheckLinkerFlag)
check_linker_flag(CXX -Wl,--icf=safe QVR_LINKER_FOLDS)
if(QVR_LINKER_FOLDS)
    target_link_options(morvenqvr PRIVATE -Wl,--icf=safe)
endif()
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
